#include "CleanerCore/Removal/CleanPlanner.h"

#include "CleanerCore/Platform/Access.h"
#include "CleanerCore/Removal/CloudEvictor.h"
#include "CleanerCore/Removal/CloudFiles.h"
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
    : paths_(paths), config_(config), policy_(paths, config.protectedPaths) {}

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
    if (std::holds_alternative<EvictTarget>(item.target)) return only(CleanAction::evict);
    if (std::holds_alternative<AdminPathTarget>(item.target)) return {planForAdmin(*path)};
    return decidePath(item, *path, trigger, disposalOverride);
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
    return decideReachable(item, std::move(*place), synced != nullptr, disposalOverride);
}

Decision CleanPlanner::decideReachable(const ScanItem& item, Place place, bool isSynced,
                                       std::optional<Disposal> disposalOverride) const {
    const auto status = place.status();
    if (!status && !(isSynced && CloudFiles::placeholder(place).status())) return unreachable(status.error());
    CleanPlan plan;
    plan.disposal = disposalOverride.value_or(config_.disposal(item.category));
    plan.isSynced = isSynced;
    // What is in the cloud only cannot be kept anywhere here.
    const bool isDataless = isSynced && CloudFiles::isDataless(place);
    plan.action = isDataless ? CleanAction::remove : actionOf(*plan.disposal);
    if (status && mayNeedRoot(place, *status)) plan.message = "may need administrator rights";
    return {std::move(plan), std::move(place)};
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
