#include "CleanerCore/Removal/Cleaning/Cleaner.h"

#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/Cleaning/CleanRun.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

// As Apple's file services number them.
constexpr int fileReadNoPermission = 257;
constexpr int fileWriteNoPermission = 513;

} // namespace

Cleaner::Administration Cleaner::sharedAdministration() {
    return {.queue = &AdminQueue::shared(),
            .remove = [](const std::vector<std::string>& paths) { return AdminRunner::remove(paths); }};
}

Cleaner::Cleaner(const Paths& paths, const AppConfig& config, Administration administration)
    : paths_(paths),
      config_(config),
      planner_(paths, config),
      quarantine_(paths),
      audit_(paths),
      administration_(std::move(administration)) {}

CleanPlan Cleaner::plan(const ScanItem& item, const TriggerSource& trigger,
                        std::optional<Disposal> disposalOverride) const {
    return planner_.decide(item, trigger, disposalOverride).plan;
}

CleanReport Cleaner::clean(const std::vector<ScanItem>& items, const TriggerSource& trigger, bool dryRun,
                           std::optional<Disposal> disposalOverride, const Progress& progress,
                           const IsStopped& isStopped) {
    const auto total = static_cast<int64_t>(items.size());
    CleanRun run({paths_, config_, planner_, quarantine_, administration_}, items, trigger, dryRun,
                 disposalOverride);
    int64_t done = 0;
    for (; done < total && !(isStopped && isStopped()); ++done) {
        if (progress) progress(done, total);
        run.handle(items[static_cast<size_t>(done)]);
    }
    run.finish(done < total);
    if (!dryRun) audit_.append(run.entries());
    if (progress) progress(done, total);
    return run.report();
}

Result<Restored> Cleaner::restore(const std::string& sessionID,
                                  const std::optional<std::set<std::string>>& entryIDs) {
    auto restored = quarantine_.restore(sessionID, entryIDs);
    if (!restored || (restored->count == 0 && restored->failures.empty())) return restored;
    AuditEntry entry;
    entry.id = newUUID();
    entry.date = currentDate();
    entry.action = "restore";
    entry.target = sessionID;
    entry.success = restored->failures.empty();
    if (!entry.success)
        entry.message = fmt::format("{} item(s) could not be restored", restored->failures.size());
    audit_.append({entry});
    return restored;
}

bool Cleaner::isPermissionError(const Failure& failure) {
    const int code = failure.code;
    const bool isCocoa = failure.domain == FailureDomain::cocoa &&
                         (code == fileWriteNoPermission || code == fileReadNoPermission);
    const bool isPosix = failure.domain == FailureDomain::posix && (code == EPERM || code == EACCES);
    return isCocoa || isPosix || (failure.underlying && isPermissionError(*failure.underlying));
}

} // namespace loftmere
