#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Removal/Administrator/AdminQueue.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/CleanPlanner.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Support/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

// Carries out what the user confirmed or a rule allowed, item by item: asks the policy once more, acts on
// exactly what was judged, and accounts for it. Built for one run with a snapshot of the settings. Blocks,
// perhaps for minutes: never on the main thread; one thread at a time.
class Cleaner {
public:
    // Called on the calling thread with the items done and all items.
    using Progress = std::function<void(int64_t done, int64_t total)>;

    // Asked on the calling thread before each item; true leaves it and all that follow as they are.
    using IsStopped = std::function<bool()>;

    // Who removes what needs root.
    struct Administration {
        AdminQueue* queue;          // where removals are gathered for one prompt; never null
        AdminQueue::Remover remove; // when they are not
    };

    // That of this process.
    static Administration sharedAdministration();

    Cleaner(const Paths& paths, const AppConfig& config,
            Administration administration = sharedAdministration());

    // What `clean` would do with the item as the disk stands now. Touches nothing.
    CleanPlan plan(const ScanItem& item, const TriggerSource& trigger,
                   std::optional<Disposal> disposalOverride = std::nullopt) const;

    // One item's failure never stops the others. Every decision goes to the log, in one write at the end. At
    // most one quarantine session is begun, by the first item that needs it, and root is asked for once at
    // most. A dry run decides the same, touches nothing and logs nothing: its byte counts are what would be
    // gained.
    CleanReport clean(const std::vector<ScanItem>& items, const TriggerSource& trigger, bool dryRun = false,
                      std::optional<Disposal> disposalOverride = std::nullopt,
                      const Progress& progress = nullptr, const IsStopped& isStopped = nullptr);

    // Brings back a quarantine session, or those of its entries whose stored names are given, and logs it,
    // unless nothing was there to bring back. Fails when the session's list cannot be saved; nothing is
    // logged then.
    Result<Restored> restore(const std::string& sessionID,
                             const std::optional<std::set<std::string>>& entryIDs);

    // Whether the failure, or one that lies under it, is that the user may not do this.
    static bool isPermissionError(const Failure& failure);

private:
    Paths paths_;
    AppConfig config_;
    CleanPlanner planner_;
    Quarantine quarantine_;
    AuditLog audit_;
    Administration administration_;
};

} // namespace loftmere
