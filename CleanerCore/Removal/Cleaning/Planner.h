#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Removal/Cleaning/Plan.h"
#include "CleanerCore/Safety/RemovalPermit.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// Decides what is to happen to items, and foresees what their volume or a missing tool forbids, so that
// nothing is begun that cannot be finished. It asks the gate once, when it is made: use a new one for each
// run. Changes nothing. Any thread.
class Planner {
public:
    Planner(const Paths& paths, const AppConfig& config);

    // Why the gate lets nothing be removed. Null when it does.
    const Failure* refusal() const { return permit_ ? nullptr : &permit_.error(); }

    // Only when there is no refusal.
    const RemovalPermit& permit() const { return *permit_; }

    // Looks at every item of the plan once, and at every folder once for all of its items. What it has seen
    // grows old, so the result is for showing; a clean rechecks it. With a refusal everything fails.
    Plan look(Plan unseen) const;

    // Decides about an item with a path target again, as the disk is now. There is an item exactly when the
    // decision is `quarantine`, `trash` or `remove`: act on it at once. Only when there is no refusal.
    struct Recheck {
        Decision decision;
        std::optional<ClearedItem> item;
    };
    Recheck recheck(const PlannedItem& planned, const TriggerSource& trigger) const;

private:
    // What was found at a path.
    struct Seen {
        SafetyPolicy::Verdict verdict;
        const Place* place;                    // null when its folder cannot be opened
        std::expected<FileStatus, int> status; // the errno value when there is none
    };

    class Folder;

    Decision withoutPath(const ScanItem& item, const Decision& wanted) const;
    Decision decide(const Decision& wanted, const Seen& seen, const TriggerSource& trigger) const;
    Decision decideReachable(Decision decision, const Seen& seen) const;
    Status mayActOn(const Place& place, const Decision& decision) const;

    Paths paths_;
    PlannedAction forAdmin_;
    Result<RemovalPermit> permit_;
    std::optional<Place> store_;           // where quarantine sessions are made
    std::vector<std::string> mountPoints_; // when this was made
};

} // namespace loftmere
