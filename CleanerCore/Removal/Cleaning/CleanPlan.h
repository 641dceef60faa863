#pragma once

#include "CleanerCore/Records/CleanCategory.h"

#include <optional>
#include <string>

namespace loftmere {

// What a clean does with one item.
enum class CleanAction {
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

// The decision about one item. A preview shows it and a clean acts on it, so the two cannot differ unless the
// disk changes in between.
struct CleanPlan {
    CleanAction action = CleanAction::fail;
    std::string message = ""; // why, for `skip`, `fail` and `gone`; else what may stand in the way
    std::optional<Disposal> disposal = std::nullopt; // the one chosen, where there is a choice
    // Who keeps it in sync, for what is removed from the cloud and from the user's other machines too.
    std::optional<std::string> provider = std::nullopt;

    bool operator==(const CleanPlan&) const = default;
};

} // namespace loftmere
