#pragma once

#include "CleanerCore/Records/TriggerSource.h"
#include "CleanerCore/Removal/Quarantine/QuarantineEntry.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <string>
#include <vector>

namespace loftmere {

// The items moved to quarantine in one clean. A value owned by the one caller that began it.
struct QuarantineSession {
    std::string id; // also its folder's name
    Date createdAt;
    Date expiresAt; // fixed when it was begun
    TriggerSource trigger;
    std::vector<QuarantineEntry> entries; // in order of arrival

    // Of the entries that are not restored.
    int64_t totalSize() const;
    int activeCount() const;

    bool operator==(const QuarantineSession&) const = default;
};

LOFTMERE_JSON_CODEC(QuarantineSession);

} // namespace loftmere
