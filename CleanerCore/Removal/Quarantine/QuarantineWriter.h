#pragma once

#include "CleanerCore/Platform/AppendFile.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"
#include "CleanerCore/Removal/Quarantine/SpaceReserve.h"
#include "CleanerCore/Safety/SafetyPolicy.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace loftmere {

// What a caller means to add later. It is only told so that many items can be announced at once.
struct ForeseenItem {
    std::string originalPath;
    int64_t size = 0;
    CleanCategory category = CleanCategory::userCaches;
};

// Moves items into one session, whose lock it holds. Each item is announced in the journal before it moves;
// items that were foreseen are announced many at a time, so that the disk is waited for once for all of them.
// One thread at a time.
class QuarantineWriter {
public:
    // Takes a session up, or up again. Fails when another run writes it.
    static Result<QuarantineWriter> open(const Paths& paths, const std::string& sessionID);

    void foresee(std::vector<ForeseenItem> items);

    // Moves the item and adds its entry to the session. On failure nothing has moved and the session is
    // unchanged.
    Status add(const Place& place, QuarantineEntry entry, QuarantineSession& session);

    // Saves the manifest and lets the journal go. When that fails the journal still tells all.
    Status finish(const QuarantineSession& session);

    // The same with the session as it stands on disk.
    Status finish();

private:
    QuarantineWriter(const Paths& paths, QuarantineFolder folder, FileLock lock);

    Status ensureAnnounced(const QuarantineEntry& entry);
    Status announce(const QuarantineEntry& entry);
    std::vector<QuarantineEntry> withFollowing(const QuarantineEntry& entry);
    Status openJournal();
    void saveNowAndThen(const QuarantineSession& session);

    SafetyPolicy policy_; // without the user's own rules
    SpaceReserve reserve_;
    QuarantineFolder folder_;
    FileLock lock_;
    std::optional<AppendFile> journal_; // from the first item on
    size_t count_ = 0;                  // entries of the session
    size_t nextSave_ = 0;               // entries at which the manifest is saved in between

    std::vector<ForeseenItem> foreseen_;
    std::unordered_map<std::string, size_t> foreseenAt_; // by original path
    std::vector<QuarantineEntry> announced_;             // the last entries written to the journal
    size_t arrived_ = 0;                                 // so many of them have moved
    size_t window_ = 0;                                  // how many to announce next
};

// The name under which an item is stored: the number of entries before it, "-" and its own name, cut to what
// a name may have.
std::string storedNameOf(size_t count, const std::string& name);

} // namespace loftmere
