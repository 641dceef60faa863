#include "CleanerCore/Scanning/Scanners/IOSUpdatesScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"

#include <array>

namespace loftmere {

namespace {

struct Root {
    const char* folder; // below the library
    const char* reason;
};

constexpr const char* firmware = "Firmware file; re-downloaded if ever needed";
constexpr const char* cached = "Cached firmware file";

// clang-format off
constexpr std::array roots{
    Root{"iTunes/iPhone Software Updates", firmware},
    Root{"iTunes/iPad Software Updates",   firmware},
    Root{"iTunes/iPod Software Updates",   firmware},
    Root{"Group Containers/K36BKF7T3D.group.com.apple.configurator/Library/Caches/Assets/TTU/com.apple.itunes.ipsw", cached},
};
// clang-format on

} // namespace

Result<std::vector<ScanItem>> IOSUpdatesScanner::scan(const ScanContext& context) const {
    std::vector<ScanItem> items;
    for (const Root& root : roots) {
        const PathFinding finding{.category = category(), .risk = Risk::safe, .reason = root.reason};
        for (const std::string& child : FS::children(context.lib(root.folder))) {
            if (context.isCancelled()) break;
            context.report(category(), child);
            finding.propose(context, child, items);
        }
    }
    return items;
}

} // namespace loftmere
