#pragma once

#include "CleanerCore/Records/ScanItem.h"

#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What a scan found in one category.
struct CategoryResult {
    CleanCategory category = CleanCategory::userCaches;
    std::vector<ScanItem> items = {};
    std::optional<std::string> error = std::nullopt; // why the category could not be scanned

    // The sum of the items' sizes.
    int64_t totalSize() const;

    bool operator==(const CategoryResult&) const = default;
};

} // namespace loftmere
