#include "CleanerCore/Removal/Cleaning/CleanPlanner.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/Volume.h"
#include "CleanerCore/Removal/CloudEvictor.h"
#include "CleanerCore/Removal/CloudFiles.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <cerrno>

namespace loftmere {

namespace {

using Decision = CleanPlanner::Decision;

Decision only(CleanAction action, std::string message = "") {
    return {{.action = action, .message = std::move(message)}};
}

// Tells an item that is gone from one that cannot be read. `error` is an errno value.
Decision unreachable(int error) {
    if (error == ENOENT || error == ENOTDIR) return only(CleanAction::gone, "already gone");
    return only(CleanAction::fail, "couldn't be read (the drive it's on may be offline)");
}

CleanAction actionOf(Disposal disposal) {
    switch (disposal) {
    case Disposal::quarantine: return CleanAction::quarantine;
    case Disposal::trash: return CleanAction::trash;
    case Disposal::remove: break;
    }
    return CleanAction::remove;
}

// Whether the user's own rights may not be enough, as far as two looks can tell. Only the attempt decides.
bool mayNeedRoot(const Place& place, const FileStatus& status) {
    if (!isWritable(parentPath(place.realPath()))) return true;
    return status.type == FileType::directory && !isWritable(place.realPath());
}

} // namespace

CleanPlanner::CleanPlanner(const Paths& paths, const AppConfig& config)
    : paths_(paths), config_(config), policy_(paths, config.protectedPaths), mountPoints_(mountPoints()) {}

Decision CleanPlanner::decide(const ScanItem& item, const TriggerSource& trigger,
                              std::optional<Disposal> disposalOverride) const {
    const std::string* path = item.anyPath();
    if (path == nullptr) return only(CleanAction::command);
    // Neither the log nor the list of what can be brought back could say which file it was.
    if (!isValidUTF8(*path)) {
        return only(CleanAction::fail,
                    fmt::format("{} has a name that is not valid text, so its removal could not "
                                "be recorded — rename it first",
                                printable(*path)));
    }
    if (std::holds_alternative<EvictTarget>(item.target)) return decideEviction(*path);
    if (std::holds_alternative<AdminPathTarget>(item.target)) return {planForAdmin(*path)};
    return decidePath(item, *path, trigger, disposalOverride);
}

Decision CleanPlanner::decideEviction(const std::string& path) const {
    const Status may = CloudEvictor::mayEvict(path, paths_);
    return may ? only(CleanAction::evict) : only(CleanAction::fail, may.error().message);
}

Decision CleanPlanner::decidePath(const ScanItem& item, const std::string& path, const TriggerSource& trigger,
                                  std::optional<Disposal> disposalOverride) const {
    auto place = Place::open(normalize(path));
    const auto verdict = place ? policy_.check(path, *place) : policy_.check(path);
    if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) {
        return only(CleanAction::skip, blocked->reason);
    }
    if (std::holds_alternative<SafetyPolicy::NeedsAdmin>(verdict)) return {planForAdmin(path)};
    const auto* synced = std::get_if<SafetyPolicy::SyncedCloud>(&verdict);
    if (synced != nullptr && !std::holds_alternative<ManualTrigger>(trigger)) {
        return only(CleanAction::skip, fmt::format("in {}; only removable by hand", synced->provider));
    }
    if (!place) return unreachable(place.error().code);
    std::optional<std::string> provider;
    if (synced != nullptr) provider = synced->provider;
    return decideReachable(item, std::move(*place), std::move(provider), disposalOverride);
}

Decision CleanPlanner::decideReachable(const ScanItem& item, Place place, std::optional<std::string> provider,
                                       std::optional<Disposal> disposalOverride) const {
    const auto status = place.status();
    if (!status && !(provider && CloudFiles::placeholder(place).status())) return unreachable(status.error());
    CleanPlan plan;
    plan.disposal = disposalOverride.value_or(config_.disposal(item.category));
    plan.provider = std::move(provider);
    // What is in the cloud only cannot be kept anywhere here.
    const bool isDataless = plan.provider && CloudFiles::isDataless(place);
    plan.action = isDataless ? CleanAction::remove : actionOf(*plan.disposal);
    if (const Status may = mayActOn(place, plan); !may) {
        plan.action = CleanAction::fail;
        plan.message = may.error().message;
        return {std::move(plan)};
    }
    if (status && mayNeedRoot(place, *status)) plan.message = "may need administrator rights";
    return {std::move(plan), std::move(place)};
}

Status CleanPlanner::mayActOn(const Place& place, const CleanPlan& plan) const {
    if (plan.action == CleanAction::quarantine) return mayQuarantine(place);
    if (plan.action == CleanAction::trash && !plan.provider) return mayTrashItem(place, paths_.home());
    return mayRemoveItem(place, mountPoints_);
}

Status CleanPlanner::mayQuarantine(const Place& place) const {
    const auto store = Place::nearest(joinPath(paths_.quarantineDir(), place.name()));
    if (!store) return {};
    if (place.isOnAnotherVolume(*store)) return failed(QuarantineError::differentVolume(place.name()));
    return mayMoveItem(place, *store);
}

CleanPlan CleanPlanner::planForAdmin(const std::string& path) const {
    if (config_.queueAdminRemovals) return {.action = CleanAction::queueForAdmin};
    const auto verdict = policy_.check(path);
    if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&verdict)) {
        return {.action = CleanAction::skip, .message = blocked->reason};
    }
    return {.action = CleanAction::removeAsAdmin};
}

bool CleanPlanner::mayAskForAdmin(const std::string& path) const {
    return SafetyPolicy::safeForAutomation(policy_.check(path));
}

} // namespace loftmere
