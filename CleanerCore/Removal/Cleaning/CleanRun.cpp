#include "CleanerCore/Removal/Cleaning/CleanRun.h"

#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/CloudEvictor.h"
#include "CleanerCore/Removal/CloudFiles.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

constexpr double commandLimit = 600; // seconds
constexpr int cloudAttempts = 4;

Status stillThere(const Place& place) {
    return failed(Failure::saying(
        fmt::format("{} reported success but is still on disk — the drive may be read-only", place.name())));
}

int64_t CleanReport::* counterOf(CleanAction action) {
    if (action == CleanAction::quarantine) return &CleanReport::quarantinedBytes;
    return action == CleanAction::trash ? &CleanReport::trashedBytes : &CleanReport::freedBytes;
}

// A path can be logged and reported only as valid text.
std::string pathOf(const ScanItem& item) {
    const std::string* path = item.anyPath();
    return path != nullptr ? repairedUTF8(*path) : item.title;
}

} // namespace

CleanRun::CleanRun(const Surroundings& with, const std::vector<ScanItem>& items, TriggerSource trigger,
                   bool dryRun, std::optional<Disposal> disposalOverride)
    : with_(with),
      items_(items),
      trigger_(std::move(trigger)),
      dryRun_(dryRun),
      disposalOverride_(disposalOverride) {}

void CleanRun::handle(const ScanItem& item) {
    carryOut(item, with_.planner.decide(item, trigger_, disposalOverride_));
}

void CleanRun::carryOut(const ScanItem& item, const CleanPlanner::Decision& decision) {
    const CleanPlan& plan = decision.plan;
    // Whether root may touch such an item is asked when its turn comes.
    const bool isForAdmin = std::holds_alternative<AdminPathTarget>(item.target);
    if (isForAdmin && plan.action != CleanAction::fail) return adminItems_.push_back(item);
    switch (plan.action) {
    case CleanAction::skip: return skip(item, plan.message);
    case CleanAction::queueForAdmin:
    case CleanAction::removeAsAdmin: return adminItems_.push_back(item);
    case CleanAction::gone:
        ++report_.itemsProcessed;
        return log("gone", item, pathOf(item), true, plan.message);
    case CleanAction::fail: return refuse(item, plan);
    default: break;
    }
    if (dryRun_) return preview(item, plan);
    switch (plan.action) {
    case CleanAction::evict: return evict(item);
    case CleanAction::command: return runCommand(item);
    default: return takeAway(item, decision);
    }
}

// What was foreseen is told and logged as the attempt would have been; a session is begun for it likewise.
void CleanRun::refuse(const ScanItem& item, const CleanPlan& plan) {
    const bool wantsSession = plan.disposal == Disposal::quarantine && !session_ && !dryRun_;
    if (wantsSession) (void)beginSession();
    const bool isEviction = std::holds_alternative<EvictTarget>(item.target);
    const char* intended = plan.disposal ? rawValue(*plan.disposal) : "skip";
    tellFailure(item, isEviction ? "evict" : intended, Failure::saying(plan.message));
}

// Speaks of the space that will be gained, so what goes to the Trash counts as freed.
void CleanRun::preview(const ScanItem& item, const CleanPlan& plan) {
    if (plan.action == CleanAction::evict)
        addBytes(report_.evictedBytes, item.size);
    else if (plan.disposal == Disposal::quarantine)
        addBytes(report_.quarantinedBytes, item.size);
    else
        addBytes(report_.freedBytes, item.size);
}

void CleanRun::evict(const ScanItem& item) {
    const auto evicted = CloudEvictor::evict(*item.anyPath(), with_.paths);
    if (!evicted) return tellFailure(item, "evict", evicted.error());
    addBytes(report_.evictedBytes, item.size);
    ++report_.itemsProcessed;
    log("evict", item, item.title, true);
}

void CleanRun::runCommand(const ScanItem& item) {
    const CommandSpec& command = std::get<CommandTarget>(item.target).command;
    const auto result = Shell::run(command.executable, command.arguments, commandLimit);
    if (result.ok()) {
        addBytes(report_.freedBytes, item.size);
        ++report_.itemsProcessed;
    } else {
        fail(item, result.err.empty() ? fmt::format("exit {}", result.status) : result.err);
    }
    log("command", item, item.title, result.ok(), command.display());
}

void CleanRun::takeAway(const ScanItem& item, const CleanPlanner::Decision& decision) {
    const char* action = rawValue(*decision.plan.disposal);
    const Status done = act(item, decision.plan, *decision.place);
    if (done) {
        addBytes(report_.*counterOf(decision.plan.action), item.size);
        ++report_.itemsProcessed;
        return log(action, item, pathOf(item), true);
    }
    const bool wantsRoot = Cleaner::isPermissionError(done.error());
    if (!wantsRoot || !with_.planner.mayAskForAdmin(*item.path()))
        return tellFailure(item, action, done.error());
    adminItems_.push_back(item);
    log(action, item, pathOf(item), false, "needs admin — queued");
}

Status CleanRun::act(const ScanItem& item, const CleanPlan& plan, const Place& place) {
    if (plan.action == CleanAction::quarantine) return toQuarantine(item, place);
    const bool isToTrash = plan.action == CleanAction::trash;
    if (isToTrash && !plan.provider) return trashItem(place, with_.paths.home());
    Status done = plan.provider ? CloudFiles::remove(place, cloudAttempts) : removeItem(place);
    if (done && !isToTrash && place.status()) return stillThere(place);
    return done;
}

Status CleanRun::toQuarantine(const ScanItem& item, const Place& place) {
    if (!session_) {
        if (auto begun = beginSession(); !begun) return begun;
    }
    const std::string path = with_.planner.normalize(*item.path());
    return with_.quarantine.add(place, path, item.size, item.category, *session_);
}

Status CleanRun::beginSession() {
    auto begun = with_.quarantine.beginSession(trigger_, with_.config.quarantineRetentionDays, currentDate());
    if (!begun) return failed(std::move(begun.error()));
    session_ = std::move(*begun);
    with_.quarantine.foresee(*session_, foreseen());
    return {};
}

// What will likely follow the first item into quarantine, so that the disk need not be waited for each time.
std::vector<ForeseenItem> CleanRun::foreseen() const {
    std::vector<ForeseenItem> likely;
    for (const ScanItem& item : items_) {
        const auto* target = std::get_if<PathTarget>(&item.target);
        if (target == nullptr || !isValidUTF8(target->path)) continue;
        const Disposal disposal = disposalOverride_.value_or(with_.config.disposal(item.category));
        if (disposal != Disposal::quarantine) continue;
        likely.push_back({with_.planner.normalize(target->path), item.size, item.category});
    }
    return likely;
}

void CleanRun::tellFailure(const ScanItem& item, const char* action, const Failure& failure) {
    const bool isEviction = std::holds_alternative<EvictTarget>(item.target);
    fail(item, failure.message);
    log(action, item, isEviction ? item.title : pathOf(item), false, failure.message);
}

void CleanRun::finish(bool isStopped) {
    // Should the session's list not be written now, the next reader completes it: nothing is lost.
    if (session_) (void)with_.quarantine.finish(*session_);
    if (!adminItems_.empty()) finishAsAdmin(isStopped);
}

CleanReport CleanRun::report() const {
    CleanReport report = report_;
    if (session_) report.quarantineSessionID = session_->id;
    return report;
}

void CleanRun::skip(const ScanItem& item, const std::string& reason) {
    report_.skippedProtected.push_back(pathOf(item));
    log("skip", item, pathOf(item), false, reason);
}

void CleanRun::fail(const ScanItem& item, const std::string& message) {
    report_.failures.push_back({repairedUTF8(item.id), repairedUTF8(message)});
}

void CleanRun::log(const char* action, const ScanItem& item, const std::string& target, bool success,
                   std::optional<std::string> message) {
    if (message) message = repairedUTF8(*message);
    entries_.push_back({.id = newUUID(),
                        .date = currentDate(),
                        .action = action,
                        .target = repairedUTF8(target),
                        .size = item.size,
                        .category = item.category,
                        .trigger = trigger_,
                        .success = success,
                        .message = std::move(message)});
}

} // namespace loftmere
