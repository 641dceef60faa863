#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/AppendFile.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Support/Result.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace loftmere {

// What is about to happen to a session's items, one JSON object a line: the entry of an item that will be
// moved in, or {"restoring": storedName} for one that will be moved back. A line is on the disk before its
// item moves. Whatever ends the process, a later reader can tell what has happened from where the items are.
struct QuarantineJournal {
    // In the order written; of several lines with one name the last one counts.
    std::vector<QuarantineEntry> arriving;

    std::unordered_set<std::string> restoring; // stored names

    // Skips damaged lines. Anyone may have written the text; fuzzers call this.
    static QuarantineJournal parse(std::string_view text);
};

// A session's folder on disk: "manifest.json", "items" (called "purged" once a purge has begun) and, while
// items are moving, the journal. When the disk is full, the lists are written in the space of a reserve that
// is kept beside the quarantine. Any thread; whoever changes something holds `lock`.
class QuarantineFolder {
public:
    // The folder that holds all sessions' folders. Fails when there is none, and for a link: the folders
    // behind it are not ours to purge.
    static Result<OpenFolder> root(const Paths& paths);

    // Fails when the id is not one, and when there is no such folder. A link in its place is not followed.
    static Result<QuarantineFolder> open(const Paths& paths, const std::string& sessionID);

    // Makes the folder with all that a session needs, and waits until it is on the disk.
    static Result<QuarantineFolder> create(const Paths& paths, const QuarantineSession& session);

    // Fills up the reserve while there is plenty of space on the disk.
    static void keepReserve(const Paths& paths);

    // Fails while another run holds it.
    Result<FileLock> lock() const;

    // When the folder was made; nothing that is done with it later changes that. Absent where the file system
    // does not keep the date.
    std::optional<Date> createdAt() const;

    // Where an item is, or will be, under its stored name. Absent when the name could lead elsewhere, and
    // when the folder has no items at all; a link or a file in their place holds none.
    std::optional<Place> item(const std::string& storedName) const;

    // Whether there is certainly nothing under the name. What cannot be looked at may be there.
    bool isAbsent(const std::string& storedName) const;

    // The path of the item, for messages.
    std::string itemPath(const std::string& storedName) const;

    // The session as it is: the manifest, completed by the journal's moves that it does not list yet. An
    // entry whose copy is gone and whose original is there has been restored. Absent when the manifest cannot
    // be read, and once a purge has begun. Fails when there is a journal that cannot be read.
    Result<std::optional<QuarantineSession>> read() const;

    // Puts the moves so far on the disk, and then the manifest.
    Status save(const QuarantineSession& session) const;

    // The same for other readers' convenience: the reserve stays, and a failure does not matter.
    void saveMeanwhile(const QuarantineSession& session) const;

    // Adds lines to the journal and waits until they are on the disk.
    Status announceArriving(std::span<const QuarantineEntry> entries);
    Status announceRestoring(std::span<const QuarantineEntry* const> entries);

    bool hasJournal() const;

    // To be called when the manifest says all that the journal says.
    void dropJournal();

    // Purges the session. One rename decides: before it the session is whole, and after it there is no
    // session any more, whatever ends or stops the deletion of what it held. A second call deletes the rest.
    Status remove() const;

    // Purges the session unless an item is left that its list does not know.
    Status removeEmptied() const;

    // A purge has begun.
    bool isPurged() const;

    // It certainly has no manifest, and nobody had touched it for a day by `now`. The day's grace keeps a
    // session that another process is just creating.
    bool isOrphan(Date now) const;

private:
    QuarantineFolder(const Paths& paths, Place place, OpenFolder folder, std::optional<OpenFolder> items);

    static Result<QuarantineFolder> createOnce(const Paths& paths, const QuarantineSession& session);
    std::string manifest() const { return folder_.realPath() + "/manifest.json"; }
    std::string journalPath() const;
    void noteBroughtBack(QuarantineSession& session) const;
    Status saveOnce(const QuarantineSession& session) const;
    Status openJournal();
    Status announce(const std::string& lines);

    std::string reserve_; // the file
    Place place_;         // in the quarantine
    OpenFolder folder_;   // the same
    std::optional<OpenFolder> items_;
    std::optional<AppendFile> journal_; // from the first announcement on
};

} // namespace loftmere
