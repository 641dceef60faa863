#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Removal/Administrator/AdminQueue.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Cleaning/Plan.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Support/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace loftmere {

// Carries out what the user confirmed or a rule allowed, item by item: it decides again right before it acts,
// acts on exactly what was judged, and accounts for it. It holds a snapshot of the settings and is built for
// one run. Blocks, perhaps for minutes: never on the main thread; one thread at a time.
class Cleaner {
public:
    // Called on the calling thread with the number of items done and of all items.
    using Progress = std::function<void(int64_t done, int64_t total)>;

    // Asked on the calling thread before each item. True leaves this item and all that follow as they are.
    using IsStopped = std::function<bool()>;

    // Who removes what needs root.
    struct Administration {
        AdminQueue* queue;          // where removals wait for one prompt; never null
        AdminQueue::Remover remove; // when they do not wait
    };

    // That of this process.
    static Administration sharedAdministration();

    Cleaner(const Paths& paths, const AppConfig& config,
            Administration administration = sharedAdministration());

    // What `clean` would do with each item as the disk is now. Looks at each once and touches nothing.
    Plan plan(std::vector<ScanItem> items, const TriggerSource& trigger,
              std::optional<Disposal> chosen = std::nullopt) const;

    // Carries the plan out. One item's failure never stops the others. Every decision goes to the log, in one
    // write at the end. The first item that needs a quarantine session begins the only one, and root is asked
    // for once at most. While the gate gives no permit every item fails with its sentence.
    CleanReport clean(const Plan& plan, const Progress& progress = nullptr,
                      const IsStopped& isStopped = nullptr);

    // The same without a plan that somebody has seen. `disposalOverride` replaces the disposal of every
    // category. A dry run is the report of the plan: it touches nothing and logs nothing.
    CleanReport clean(std::vector<ScanItem> items, const TriggerSource& trigger, bool dryRun = false,
                      std::optional<Disposal> disposalOverride = std::nullopt,
                      const Progress& progress = nullptr);

    // Brings back a quarantine session, or the entries with the given stored names, and logs it unless there
    // was nothing to bring back. Fails when the session's list cannot be saved; nothing is logged then.
    Result<Restored> restore(const std::string& sessionID,
                             const std::optional<std::set<std::string>>& entryIDs);

    // Whether the failure, or one that underlies it, is that the user may not do this.
    static bool isPermissionError(const Failure& failure);

private:
    class Run;

    Paths paths_;
    AppConfig config_;
    Quarantine quarantine_;
    AuditLog audit_;
    Administration administration_;
};

} // namespace loftmere
