#include "CleanerCore/Removal/Cleaning/Cleaner.h"

#include "CleanerCore/Process/Shell.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/Cleaning/Doors.h"
#include "CleanerCore/Removal/Cleaning/Planner.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

constexpr double commandLimit = 600; // seconds

// As Apple's file services number them.
constexpr int fileReadNoPermission = 257;
constexpr int fileWriteNoPermission = 513;

int64_t CleanReport::* counterOf(PlannedAction action) {
    if (action == PlannedAction::quarantine) return &CleanReport::quarantinedBytes;
    return action == PlannedAction::trash ? &CleanReport::trashedBytes : &CleanReport::freedBytes;
}

// What the log and the report call the item. A path can be written there only as valid text.
std::string pathOf(const ScanItem& item) {
    const std::string* path = item.anyPath();
    return path != nullptr ? repairedUTF8(*path) : item.title;
}

} // namespace

// One clean, item by item: carries out a plan and accounts for what it did. The calling thread does all the
// work.
class Cleaner::Run {
public:
    Run(Cleaner& with, const Plan& plan) : with_(with), plan_(plan), planner_(with.paths_, with.config_) {}

    void handle(const PlannedItem& planned);

    // What comes after all items: closes the quarantine session, then does root's share. When the run
    // `isStopped` nobody is asked for a password: root's share waits in the queue.
    void finish(bool isStopped);

    CleanReport report() const;
    const std::vector<AuditEntry>& entries() const { return entries_; }

private:
    void leave(const ScanItem& item, const Decision& decision);
    void evict(const ScanItem& item);
    void runCommand(const ScanItem& item);
    void takeAway(const PlannedItem& planned);
    Status act(const ScanItem& item, const Decision& decision, const ClearedItem& cleared);
    Status toQuarantine(const ScanItem& item, const ClearedItem& cleared);
    Status beginSession();
    std::vector<ForeseenItem> foreseen() const;
    void enqueueForAdmin();
    void removeAsAdmin();
    void accountAsAdmin(const ScanItem& item, const ClearedPath& cleared, const Shell::Result& result);

    void skip(const ScanItem& item, const std::string& reason);
    void fail(const ScanItem& item, const char* action, const std::string& message);
    void reportFailure(const ScanItem& item, const std::string& message);
    void log(const char* action, const ScanItem& item, const std::string& target, bool success,
             std::optional<std::string> message = std::nullopt);

    Cleaner& with_;
    const Plan& plan_;
    const Planner planner_;
    CleanReport report_;
    std::vector<AuditEntry> entries_;
    std::vector<ScanItem> adminItems_;
    std::optional<QuarantineSession> session_; // begun by the first item that needs it
};

void Cleaner::Run::handle(const PlannedItem& planned) {
    const auto& [item, decision] = planned;
    if (const Failure* refusal = planner_.refusal()) return fail(item, "skip", refusal->message);
    switch (decision.action) {
    case PlannedAction::skip:
    case PlannedAction::fail:
    case PlannedAction::gone: return leave(item, decision);
    case PlannedAction::evict: return evict(item);
    case PlannedAction::command: return runCommand(item);
    case PlannedAction::queueForAdmin:
    case PlannedAction::removeAsAdmin: return adminItems_.push_back(item); // rechecked when its turn comes
    case PlannedAction::quarantine:
    case PlannedAction::trash:
    case PlannedAction::remove: return takeAway(planned);
    }
}

void Cleaner::Run::leave(const ScanItem& item, const Decision& decision) {
    if (decision.action == PlannedAction::skip) return skip(item, decision.message);
    if (decision.action == PlannedAction::gone) {
        ++report_.itemsProcessed;
        return log("gone", item, pathOf(item), true, decision.message);
    }
    // What was foreseen to fail is told as if it had been attempted, so it begins a session as well.
    if (decision.disposal == Disposal::quarantine && !session_) (void)beginSession();
    fail(item, decision.disposal ? rawValue(*decision.disposal) : "skip", decision.message);
}

void Cleaner::Run::evict(const ScanItem& item) {
    const auto evicted = CloudEvictor::evict(planner_.permit(), *item.anyPath(), with_.paths_);
    if (!evicted) return fail(item, "evict", evicted.error().message);
    addBytes(report_.evictedBytes, item.size);
    ++report_.itemsProcessed;
    log("evict", item, item.title, true);
}

void Cleaner::Run::runCommand(const ScanItem& item) {
    const CommandSpec& command = std::get<CommandTarget>(item.target).command;
    const auto result = Shell::run(command.executable, command.arguments, commandLimit);
    if (result.ok()) {
        addBytes(report_.freedBytes, item.size);
        ++report_.itemsProcessed;
    } else {
        reportFailure(item, result.err.empty() ? fmt::format("exit {}", result.status) : result.err);
    }
    log("command", item, item.title, result.ok(), command.display());
}

void Cleaner::Run::takeAway(const PlannedItem& planned) {
    const ScanItem& item = planned.item;
    const auto [decision, cleared] = planner_.recheck(planned, plan_.trigger);
    const bool isForRoot =
        decision.action == PlannedAction::queueForAdmin || decision.action == PlannedAction::removeAsAdmin;
    if (isForRoot) return adminItems_.push_back(item);
    if (!cleared) return leave(item, decision);
    const char* action = rawValue(*decision.disposal);
    const Status done = act(item, decision, *cleared);
    if (done) {
        addBytes(report_.*counterOf(decision.action), item.size);
        ++report_.itemsProcessed;
        return log(action, item, pathOf(item), true);
    }
    // Root may help where the user's own rights were all that was missing.
    const bool mayAskRoot = isPermissionError(done.error()) &&
                            SafetyPolicy::safeForAutomation(planner_.permit().policy().check(*item.path()));
    if (!mayAskRoot) return fail(item, action, done.error().message);
    adminItems_.push_back(item);
    log(action, item, pathOf(item), false, "needs admin — queued");
}

Status Cleaner::Run::act(const ScanItem& item, const Decision& decision, const ClearedItem& cleared) {
    if (decision.action == PlannedAction::quarantine) return toQuarantine(item, cleared);
    if (decision.action == PlannedAction::trash) return moveToTrash(cleared, with_.paths_.home());
    return removeForGood(cleared);
}

Status Cleaner::Run::toQuarantine(const ScanItem& item, const ClearedItem& cleared) {
    if (!session_) {
        if (auto begun = beginSession(); !begun) return begun;
    }
    return with_.quarantine_.add(cleared, item.size, item.category, *session_);
}

Status Cleaner::Run::beginSession() {
    auto begun =
        with_.quarantine_.beginSession(plan_.trigger, with_.config_.quarantineRetentionDays, currentDate());
    if (!begun) return failed(std::move(begun.error()));
    session_ = std::move(*begun);
    with_.quarantine_.foresee(*session_, foreseen());
    return {};
}

// What will probably follow the first item into quarantine, so that the disk need not be waited for each
// time.
std::vector<ForeseenItem> Cleaner::Run::foreseen() const {
    std::vector<ForeseenItem> likely;
    for (const auto& [item, decision] : plan_.items) {
        if (decision.action != PlannedAction::quarantine) continue;
        likely.push_back({planner_.permit().normalize(*item.path()), item.size, item.category});
    }
    return likely;
}

void Cleaner::Run::finish(bool isStopped) {
    // Should this fail to write the session's list, the next reader completes it: nothing is lost.
    if (session_) (void)with_.quarantine_.finish(*session_);
    if (adminItems_.empty()) return;
    if (with_.config_.queueAdminRemovals || isStopped)
        enqueueForAdmin();
    else
        removeAsAdmin();
}

void Cleaner::Run::enqueueForAdmin() {
    with_.administration_.queue->enqueue(adminItems_);
    report_.deferredAdmin = static_cast<int64_t>(adminItems_.size());
    for (const ScanItem& item : adminItems_)
        log("queued", item, pathOf(item), true, "waiting for one password prompt");
}

void Cleaner::Run::removeAsAdmin() {
    std::vector<const ScanItem*> kept;
    std::vector<ClearedPath> paths;
    for (const ScanItem& item : adminItems_) {
        auto cleared = planner_.permit().clearForRoot(*item.path());
        if (!cleared) {
            skip(item, cleared.error().reason);
            continue;
        }
        kept.push_back(&item);
        paths.push_back(*std::move(cleared));
    }
    const Shell::Result result = with_.administration_.remove(paths);
    for (size_t i = 0; i < kept.size(); ++i) accountAsAdmin(*kept[i], paths[i], result);
}

void Cleaner::Run::accountAsAdmin(const ScanItem& item, const ClearedPath& cleared,
                                  const Shell::Result& result) {
    const bool isGone = AdminRunner::isGone(cleared.path(), result);
    if (isGone) {
        addBytes(report_.freedBytes, item.size);
        ++report_.itemsProcessed;
    } else {
        reportFailure(item, result.ok() ? "Could not remove" : result.err);
    }
    log("delete", item, pathOf(item), isGone, "admin");
}

CleanReport Cleaner::Run::report() const {
    CleanReport report = report_;
    if (session_) report.quarantineSessionID = session_->id;
    return report;
}

void Cleaner::Run::skip(const ScanItem& item, const std::string& reason) {
    report_.skippedProtected.push_back(pathOf(item));
    log("skip", item, pathOf(item), false, reason);
}

void Cleaner::Run::fail(const ScanItem& item, const char* action, const std::string& message) {
    reportFailure(item, message);
    const bool isEviction = std::holds_alternative<EvictTarget>(item.target);
    log(isEviction ? "evict" : action, item, isEviction ? item.title : pathOf(item), false, message);
}

void Cleaner::Run::reportFailure(const ScanItem& item, const std::string& message) {
    report_.failures.push_back({repairedUTF8(item.id), repairedUTF8(message)});
}

void Cleaner::Run::log(const char* action, const ScanItem& item, const std::string& target, bool success,
                       std::optional<std::string> message) {
    AuditEntry entry = AuditEntry::now(action, repairedUTF8(target), plan_.trigger);
    entry.size = item.size;
    entry.category = item.category;
    entry.success = success;
    if (message) entry.message = repairedUTF8(*message);
    entries_.push_back(std::move(entry));
}

Cleaner::Administration Cleaner::sharedAdministration() {
    return {.queue = &AdminQueue::shared(),
            .remove = [](const std::vector<ClearedPath>& paths) { return AdminRunner::remove(paths); }};
}

Cleaner::Cleaner(const Paths& paths, const AppConfig& config, Administration administration)
    : paths_(paths),
      config_(config),
      quarantine_(paths),
      audit_(paths),
      administration_(std::move(administration)) {}

Plan Cleaner::plan(std::vector<ScanItem> items, const TriggerSource& trigger,
                   std::optional<Disposal> chosen) const {
    return Planner(paths_, config_).look(Plan::unseen(std::move(items), trigger, config_, chosen));
}

CleanReport Cleaner::clean(const Plan& plan, const Progress& progress, const IsStopped& isStopped) {
    const auto total = static_cast<int64_t>(plan.items.size());
    Run run(*this, plan);
    int64_t done = 0;
    for (; done < total && !(isStopped && isStopped()); ++done) {
        if (progress) progress(done, total);
        run.handle(plan.items[static_cast<size_t>(done)]);
    }
    run.finish(done < total);
    audit_.append(run.entries());
    if (progress) progress(done, total);
    return run.report();
}

CleanReport Cleaner::clean(std::vector<ScanItem> items, const TriggerSource& trigger, bool dryRun,
                           std::optional<Disposal> disposalOverride, const Progress& progress) {
    if (!dryRun) return clean(Plan::unseen(std::move(items), trigger, config_, disposalOverride), progress);
    const Plan looked = plan(std::move(items), trigger, disposalOverride);
    const auto total = static_cast<int64_t>(looked.items.size());
    for (int64_t done = 0; progress && done <= total; ++done) progress(done, total);
    return looked.report();
}

Result<Restored> Cleaner::restore(const std::string& sessionID,
                                  const std::optional<std::set<std::string>>& entryIDs) {
    auto restored = quarantine_.restore(sessionID, entryIDs);
    if (!restored || (restored->count == 0 && restored->failures.empty())) return restored;
    AuditEntry entry = AuditEntry::now("restore", sessionID, ManualTrigger{});
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
