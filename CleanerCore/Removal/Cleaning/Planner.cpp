#include "CleanerCore/Removal/Cleaning/Planner.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Platform/Volume.h"
#include "CleanerCore/Removal/Cleaning/Doors.h"
#include "CleanerCore/Removal/Quarantine/QuarantineSession.h"
#include "CleanerCore/Removal/Quarantine/QuarantineWriter.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

#include <cerrno>
#include <map>

namespace loftmere {

namespace {

Decision only(PlannedAction action, std::string message = "") {
    return {.action = action, .message = std::move(message)};
}

// Tells an item that is gone from one that cannot be read. `error` is an errno value.
Decision unreachable(int error) {
    if (error == ENOENT || error == ENOTDIR) return only(PlannedAction::gone, "already gone");
    return only(PlannedAction::fail, "couldn't be read (the drive it's on may be offline)");
}

} // namespace

// A folder that is opened once for all of its items, which are looked at one after the other.
class Planner::Folder {
public:
    Folder(const Planner& planner, SafetyPolicy::Batch& policy) : planner_(planner), policy_(policy) {}

    Decision look(const PlannedItem& planned, const TriggerSource& trigger) {
        const std::string& path = *planned.item.path();
        const std::string normal = planner_.permit_->normalize(path);
        const auto place = placeOf(normal);
        if (!place) {
            const int error = place.error().code;
            return planner_.decide(planned.decision, {policy_.check(path), nullptr, std::unexpected(error)},
                                   trigger);
        }
        const Seen seen{policy_.check(path, *place), &*place, place->status()};
        Decision decision = planner_.decide(planned.decision, seen, trigger);
        if (isTakenAway(decision.action) && mayNeedRoot(seen))
            decision.message = "may need administrator rights";
        return decision;
    }

private:
    Result<Place> placeOf(const std::string& path) {
        const std::string name = lastPathComponent(path);
        if (first_ && isEntryName(name)) return first_->beside(name);
        auto place = Place::open(path);
        if (place) {
            first_ = *place;
            isWritable_ = isWritable(parentPath(place->realPath()));
        }
        return place;
    }

    // Whether the user's own rights may not be enough, as far as a look can tell. Only the attempt decides.
    bool mayNeedRoot(const Seen& seen) const {
        if (!isWritable_) return true;
        return seen.status && seen.status->type == FileType::directory && !isWritable(seen.place->realPath());
    }

    const Planner& planner_;
    SafetyPolicy::Batch& policy_;
    std::optional<Place> first_;
    bool isWritable_ = false;
};

Planner::Planner(const Paths& paths, const AppConfig& config)
    : paths_(paths),
      forAdmin_(config.queueAdminRemovals ? PlannedAction::queueForAdmin : PlannedAction::removeAsAdmin),
      permit_(RemovalPermit::ask(paths, config)),
      store_(Place::nearest(joinPath(paths.quarantineDir(), "session"))),
      mountPoints_(mountPoints()) {}

Plan Planner::look(Plan plan) const {
    if (!permit_) {
        for (PlannedItem& each : plan.items) each.decision = only(PlannedAction::fail, refusal()->message);
        return plan;
    }
    std::map<std::string, std::vector<PlannedItem*>> folders;
    for (PlannedItem& each : plan.items) {
        if (isTakenAway(each.decision.action))
            folders[parentPath(permit_->normalize(*each.item.path()))].push_back(&each);
        else
            each.decision = withoutPath(each.item, each.decision);
    }
    SafetyPolicy::Batch policy(permit_->policy());
    for (const auto& [path, items] : folders) {
        Folder folder(*this, policy);
        for (PlannedItem* each : items) each->decision = folder.look(*each, plan.trigger);
    }
    return plan;
}

Decision Planner::withoutPath(const ScanItem& item, const Decision& wanted) const {
    if (wanted.action == PlannedAction::evict) {
        const Status may = CloudEvictor::mayEvict(*item.anyPath(), paths_);
        if (!may) return only(PlannedAction::fail, may.error().message);
    }
    if (wanted.action == PlannedAction::removeAsAdmin) {
        const auto cleared = permit_->clearForRoot(*item.path());
        if (!cleared) return only(PlannedAction::skip, cleared.error().reason);
    }
    return wanted;
}

Planner::Recheck Planner::recheck(const PlannedItem& planned, const TriggerSource& trigger) const {
    auto judged = permit_->judge(*planned.item.path());
    const Place* place = judged.item ? &judged.item->place() : nullptr;
    auto status = place ? place->status() : std::unexpected(judged.item.error().code);
    Decision decision =
        decide(planned.decision, {std::move(judged.verdict), place, std::move(status)}, trigger);
    if (!isTakenAway(decision.action)) return {std::move(decision), std::nullopt};
    return {std::move(decision), *std::move(judged.item)};
}

Decision Planner::decide(const Decision& wanted, const Seen& seen, const TriggerSource& trigger) const {
    if (const auto* blocked = std::get_if<SafetyPolicy::Blocked>(&seen.verdict)) {
        return only(PlannedAction::skip, blocked->reason);
    }
    if (std::holds_alternative<SafetyPolicy::NeedsAdmin>(seen.verdict)) return only(forAdmin_);
    Decision decision{.action = actionOf(*wanted.disposal), .disposal = wanted.disposal};
    if (const auto* synced = std::get_if<SafetyPolicy::SyncedCloud>(&seen.verdict)) {
        if (!std::holds_alternative<ManualTrigger>(trigger))
            return only(PlannedAction::skip, fmt::format("in {}; only removable by hand", synced->provider));
        decision.provider = synced->provider;
    }
    const bool isThere = seen.status || (seen.place != nullptr && decision.provider &&
                                         CloudFiles::placeholder(*seen.place).status());
    return isThere ? decideReachable(std::move(decision), seen) : unreachable(seen.status.error());
}

Decision Planner::decideReachable(Decision decision, const Seen& seen) const {
    // What is held in the cloud only cannot be kept anywhere on this machine.
    const bool isDataless = decision.provider && CloudFiles::isDataless(*seen.place);
    if (isDataless) decision.action = PlannedAction::remove;
    if (const Status may = mayActOn(*seen.place, decision); !may) {
        decision.action = PlannedAction::fail;
        decision.message = may.error().message;
    }
    return decision;
}

Status Planner::mayActOn(const Place& place, const Decision& decision) const {
    if (decision.action == PlannedAction::trash && !decision.provider)
        return mayTrashItem(place, paths_.home());
    if (decision.action != PlannedAction::quarantine) return mayRemoveItem(place, mountPoints_);
    if (auto may = store_ ? mayMoveItem(place, *store_) : Status{}; !may) {
        const bool isElsewhere = may.error().code == EXDEV && !place.isMountPoint();
        return isElsewhere ? failed(QuarantineError::differentVolume(place.name())) : may;
    }
    return mayMoveWhole(place, mountPoints_);
}

} // namespace loftmere
