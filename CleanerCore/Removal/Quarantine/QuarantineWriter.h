#pragma once

#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Removal/Quarantine/QuarantineFolder.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace loftmere {

// What a caller means to add later. It serves only to announce many items at once.
struct ForeseenItem {
    std::string originalPath;
    int64_t size = 0;
    CleanCategory category = CleanCategory::userCaches;
};

// Fails when one of the mount points is at or below the item: what is mounted there would come along, and a
// purge would empty it.
Status mayMoveWhole(const Place& place, const std::vector<std::string>& mountPoints);

// Moves items into one session, whose lock it holds. Each item is announced in the journal before it moves.
// Items that were foreseen are announced many at a time, so that one wait for the disk serves all of them.
// One thread at a time.
class QuarantineWriter {
public:
    // Starts with a session, or goes on with it. Fails while another run writes it.
    static Result<QuarantineWriter> open(const Paths& paths, const std::string& sessionID);

    void foresee(std::vector<ForeseenItem> items);

    // Moves the item and adds its entry to the session. On failure nothing has moved and the session is
    // unchanged.
    Status add(const Place& place, QuarantineEntry entry, QuarantineSession& session);

    // Saves the manifest and removes the journal. On failure the journal still says all.
    Status finish(const QuarantineSession& session);

    // The same with the session as it is on disk.
    Status finish();

private:
    QuarantineWriter(QuarantineFolder folder, FileLock lock);

    Status ensureAnnounced(const QuarantineEntry& entry);
    std::vector<QuarantineEntry> withFollowing(const QuarantineEntry& entry);
    void saveNowAndThen(const QuarantineSession& session);

    std::vector<std::string> mountPoints_;
    QuarantineFolder folder_;
    FileLock lock_;
    size_t count_ = 0;    // entries of the session
    size_t nextSave_ = 0; // entries at which the manifest is saved in between

    std::vector<ForeseenItem> foreseen_;
    std::unordered_map<std::string, size_t> foreseenAt_; // by original path
    std::vector<QuarantineEntry> announced_;             // the last entries written to the journal
    size_t arrived_ = 0;                                 // so many of them have moved
    size_t window_ = 0;                                  // how many to announce next
};

} // namespace loftmere
