#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Removal/Quarantine/QuarantineWriter.h"
#include "CleanerCore/Safety/RemovalPermit.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

// The undo store. What is removed is moved into a folder of the program's own on the same volume, never
// copied, and can be brought back until its session expires. Whatever ends the process, every item is where
// it was or in a session that `sessions` lists and `restore` brings back. Any thread, each session from one
// at a time; several processes may use the store side by side. Blocks: never on the main thread.
class Quarantine {
public:
    // Touches nothing on disk.
    explicit Quarantine(const Paths& paths);

    // Finishes the sessions that were not finished.
    ~Quarantine();
    Quarantine(const Quarantine&) = delete;
    Quarantine& operator=(const Quarantine&) = delete;

    // Makes a session's folder. It expires `retentionDays` after `now`, whatever the setting becomes later. A
    // negative number means none.
    Result<QuarantineSession> beginSession(const TriggerSource& trigger, int64_t retentionDays, Date now);

    // Says what is likely to be added next, in that order. Only a matter of speed: each addition waits for
    // the disk once, and those that were foreseen wait together.
    void foresee(const QuarantineSession& session, std::vector<ForeseenItem> items);

    // Moves the item and adds its entry to the session. Fails, with nothing moved, when the item is on
    // another volume or has one mounted below it, when its name is not valid UTF-8, and when the file system
    // refuses. The entry's path is the item's, or the real one when a link in its parents leads out of the
    // home: none is followed on the way back.
    Status add(const ClearedItem& item, int64_t size, CleanCategory category, QuarantineSession& session);

    // Writes the session's manifest and lets others use the session. To be called after the last addition. If
    // that is forgotten or fails, nothing is lost.
    Status finish(const QuarantineSession& session);

    // Moves the entries back, all or those whose stored names are given. Missing parent folders are made;
    // nothing is overwritten. Answers what was moved back, and the entries that failed by their original
    // paths; neither when there is no readable manifest. Fails while another run writes the session, when its
    // journal cannot be read, and when the manifest cannot be saved. The session's folder goes with its last
    // entry.
    Result<Restored> restore(const std::string& sessionID,
                             const std::optional<std::set<std::string>>& entryIDs);

    // Those with a manifest that can be read, newest first. Of one second, the one whose folder was made last
    // comes first.
    std::vector<QuarantineSession> sessions() const;

    // Fails with a sentence for the user when there is a quarantine that cannot be listed, or a link in its
    // place. `sessions` is empty then, and says nothing about what is held.
    Status check() const;

    // The names of the other folders, those that are not in `listed`, the answer of `sessions`: their
    // manifest or their journal cannot be read, or their purge was cut short. `purge` takes them.
    std::vector<std::string> unreadable(const std::vector<QuarantineSession>& listed) const;

    // The bytes of all entries that are still held.
    int64_t totalSize() const;

    // Deletes a session with all it holds, whether or not it can be read. Fails while another run writes it.
    // A purge that is cut short leaves the whole session or none; the rest of it is `unreadable` then.
    Status purge(const std::string& sessionID);

    // Purges what has expired by `now`, folders without a manifest that nobody has touched for a day, and
    // what purges left that were cut short. Answers the bytes that the expired sessions held. Sessions in use
    // are left alone.
    int64_t purgeExpired(Date now);

private:
    Result<QuarantineWriter*> writerOf(const std::string& sessionID);
    void letGo(const std::string& sessionID);
    void sweep(Date now) const;

    const Paths paths_;
    std::mutex lock_; // guards writers_
    std::map<std::string, std::unique_ptr<QuarantineWriter>> writers_;
};

} // namespace loftmere
