#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Removal/Quarantine/QuarantineJournal.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <string>

namespace loftmere {

// A session's folder on disk: "manifest.json", "items" and, while items are moving, the journal. Any thread;
// those who change something hold `lock`.
class QuarantineFolder {
public:
    // Fails when the id is none, and when there is no such folder. A link that stands there is not followed.
    static Result<QuarantineFolder> open(const Paths& paths, const std::string& sessionID);

    // Makes the folder with all that a session needs, on the disk.
    static Result<QuarantineFolder> create(const Paths& paths, const QuarantineSession& session);

    // Fails while another run holds it.
    Result<FileLock> lock() const;

    // When the folder was made: nothing that is done with it later changes that. Absent where the file system
    // does not keep it.
    std::optional<Date> made() const;

    // Where an item stands, or will stand, under its stored name. Absent when the name could lead elsewhere,
    // or when the folder has no items at all;
    // a link or a file in their place holds none.
    std::optional<Place> item(const std::string& storedName) const;

    // Whether certainly nothing is stored under the name; what cannot be looked at may be there.
    bool isAbsent(const std::string& storedName) const;

    // The path of the item, for messages.
    std::string itemPath(const std::string& storedName) const;

    // The session as it is: the manifest, with what the journal tells of moves that it does not know yet.
    // Absent when the manifest cannot be read; fails when the journal is there and cannot be.
    Result<std::optional<QuarantineSession>> read() const;

    // Puts the moves so far on the disk and then the manifest.
    Status save(const QuarantineSession& session) const;

    Result<AppendFile> openJournal() const;
    bool hasJournal() const;

    // When the manifest tells all that the journal does.
    void dropJournal() const;

    // Removes the folder, what it holds first and the manifest late, so that what a crash leaves is still
    // listed.
    Status remove() const;

    // The same, unless an item is left that the session does not know.
    Status removeEmptied() const;

private:
    QuarantineFolder(Place place, std::optional<Place> items)
        : place_(std::move(place)), items_(std::move(items)) {}

    std::string manifest() const { return place_.realPath() + "/manifest.json"; }
    std::string journal() const;

    Place place_;                // in the quarantine
    std::optional<Place> items_; // any name among the items
};

} // namespace loftmere
