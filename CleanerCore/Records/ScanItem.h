#pragma once

#include "CleanerCore/Records/CleanCategory.h"
#include "CleanerCore/Records/ItemTarget.h"
#include "CleanerCore/Records/Risk.h"
#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <optional>
#include <string>

namespace loftmere {

// What a scanner says of a finding; ScanItem::make gives it an identity.
struct ItemDescription {
    std::optional<std::string> title = std::nullopt; // absent: the path's last component, or the command line
    ItemTarget target = {};
    int64_t size = 0;
    CleanCategory category = CleanCategory::userCaches;
    Risk risk = Risk::safe;
    std::string reason = {};
    std::optional<Date> lastUsed = std::nullopt;
};

// One proposed removal.
struct ScanItem {
    std::string id; // derived from the target, so that a thing found again has the same id
    std::string title;
    ItemTarget target = {};
    int64_t size = 0; // allocated bytes, or an estimate for commands
    CleanCategory category = CleanCategory::userCaches;
    Risk risk = Risk::safe;
    std::string reason;           // the sentence that explains the finding
    std::optional<Date> lastUsed; // absent when unknown

    static ScanItem make(ItemDescription description);

    // The path of a `path` or `adminPath` target, else null.
    const std::string* path() const;

    // The path of any target but a command's, else null.
    const std::string* anyPath() const;

    bool operator==(const ScanItem&) const = default;
};

LOFTMERE_JSON_CODEC(ScanItem);

} // namespace loftmere
