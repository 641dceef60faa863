#pragma once

#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

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

// One item that could not be handled.
struct CleanFailure {
    std::string itemID; // ScanItem::id
    std::string message;
    bool operator==(const CleanFailure&) const = default;
};

// What one clean did.
struct CleanReport {
    int64_t freedBytes = 0;
    int64_t evictedBytes = 0;
    int64_t quarantinedBytes = 0;
    int64_t trashedBytes = 0;
    int64_t itemsProcessed = 0;
    std::vector<CleanFailure> failures = {};
    std::optional<std::string> quarantineSessionID = std::nullopt;
    std::vector<std::string> skippedProtected = {}; // paths that the safety policy refused
    int64_t deferredAdmin = 0;                      // items put in the administrator queue

    // The sum of the four byte counts.
    int64_t totalHandledBytes() const;

    bool operator==(const CleanReport&) const = default;
};

LOFTMERE_JSON_CODEC(TriggerSource);
LOFTMERE_JSON_CODEC(CleanFailure);
LOFTMERE_JSON_CODEC(CleanReport);

} // namespace loftmere
