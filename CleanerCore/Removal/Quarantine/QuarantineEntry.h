#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <string>

namespace loftmere {

// One item in quarantine.
struct QuarantineEntry {
    std::string originalPath; // where it stood, absolute
    std::string storedName;   // its name among the session's items
    int64_t size = 0;         // bytes as the scan told them
    CleanCategory category = CleanCategory::userCaches;
    bool restored = false; // it has been moved back

    const std::string& id() const { return storedName; }

    bool operator==(const QuarantineEntry&) const = default;
};

LOFTMERE_JSON_CODEC(QuarantineEntry);

} // namespace loftmere
