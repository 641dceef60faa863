#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScanContext.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace loftmere {

// What a scanner says of the paths that it proposes for one and the same reason.
struct PathFinding {
    CleanCategory category = CleanCategory::userCaches;
    Risk risk = Risk::safe;
    std::string reason;
    int64_t minimum = 1; // allocated bytes below which a path is not worth proposing

    // The item for a path that has passed the scanner's own tests: absent when the path is fresh or smaller
    // than `minimum`, so also when it has vanished. `title` absent means the path's last component. A scan
    // cancelled meanwhile gives what was measured so far as the size.
    std::optional<ScanItem> propose(const ScanContext& context, const std::string& path,
                                    std::optional<std::string> title = std::nullopt) const;

    // `propose`, appended to `items` when there is one.
    void propose(const ScanContext& context, const std::string& path, std::vector<ScanItem>& items) const;
};

} // namespace loftmere
