#pragma once

#include "CleanerCore/Support/Json.h"

#include <string>
#include <variant>

namespace loftmere {

struct ManualTrigger {
    bool operator==(const ManualTrigger&) const = default;
};

struct ScheduleTrigger {
    std::string ruleName;
    bool operator==(const ScheduleTrigger&) const = default;
};

struct UninstallTrigger {
    std::string appName;
    bool operator==(const UninstallTrigger&) const = default;
};

// What started an action.
using TriggerSource = std::variant<ManualTrigger, ScheduleTrigger, UninstallTrigger>;

// "Manual", "Schedule: {ruleName}", "Uninstall: {appName}".
std::string label(const TriggerSource& trigger);

LOFTMERE_JSON_CODEC(TriggerSource);

} // namespace loftmere
