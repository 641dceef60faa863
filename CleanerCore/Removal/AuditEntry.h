#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Support/Date.h"
#include "CleanerCore/Support/Json.h"

#include <cstdint>
#include <optional>
#include <string>

namespace loftmere {

// One action that touched, or declined to touch, the disk.
struct AuditEntry {
    std::string id;     // an upper-case UUID; a new random one by default
    Date date;          // the moment of the action
    std::string action; // "delete", "skip", "restore", ...
    std::string target; // a path, an item's title or a session's id
    int64_t size = 0;
    std::optional<CleanCategory> category;
    TriggerSource trigger;
    bool success = false; // whether it did what its action says
    std::optional<std::string> message;

    bool operator==(const AuditEntry&) const = default;
};

LOFTMERE_JSON_CODEC(AuditEntry);

} // namespace loftmere
