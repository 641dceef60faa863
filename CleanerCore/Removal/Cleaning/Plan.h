#pragma once

#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"

#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What a clean does with one item.
enum class PlannedAction {
    skip,          // the policy refuses it
    fail,          // it cannot be done
    gone,          // nothing is there any more
    evict,         // its local copy is released
    command,       // its tool is run
    queueForAdmin, // it waits for the one password prompt
    removeAsAdmin, // root removes it in this clean
    quarantine,    // it is moved where it can be brought back from
    trash,
    remove, // for good
};

// Whether the item itself is moved or deleted with the user's own rights.
constexpr bool isTakenAway(PlannedAction action) {
    return action >= PlannedAction::quarantine;
}

PlannedAction actionOf(Disposal disposal);

// The decision about one item.
struct Decision {
    PlannedAction action = PlannedAction::fail;
    std::string message = ""; // why, for `skip`, `fail` and `gone`; otherwise what may get in the way
    std::optional<Disposal> disposal = std::nullopt; // the chosen one, where there is a choice
    // Who keeps the item in sync, when a removal would reach the user's other machines too.
    std::optional<std::string> provider = std::nullopt;

    bool operator==(const Decision&) const = default;
};

struct PlannedItem {
    ScanItem item;
    Decision decision;
};

// What a clean is to do, item by item. A preview shows it and a clean carries it out: the clean leaves alone
// what the plan leaves alone, and decides about every other item again right before it acts. So the two
// cannot differ unless the disk changes in between.
struct Plan {
    TriggerSource trigger;
    std::vector<PlannedItem> items; // in the order in which they are cleaned

    // What the settings want for each item, before anything has looked at the disk. `chosen` replaces the
    // disposal of every category.
    static Plan unseen(std::vector<ScanItem> items, TriggerSource trigger, const AppConfig& config,
                       std::optional<Disposal> chosen = std::nullopt);

    // The report of a clean that goes as planned, told as a preview: its byte counts are the space that would
    // be gained, so what goes to the Trash or to root counts as freed. No item counts as processed unless it
    // is gone already.
    CleanReport report() const;
};

} // namespace loftmere
