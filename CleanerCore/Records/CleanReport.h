#pragma once

#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// One item that could not be handled.
struct CleanFailure {
    std::string itemID; // ScanItem::id
    std::string message;
    bool operator==(const CleanFailure&) const = default;
};

// The account of one clean.
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

    int64_t totalHandledBytes() const;

    bool operator==(const CleanReport&) const = default;
};

LOFTMERE_JSON_CODEC(CleanFailure);
LOFTMERE_JSON_CODEC(CleanReport);

} // namespace loftmere
