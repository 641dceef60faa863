#include "CleanerCore/Scanning/Scanners/UserCachesScanner.h"

#include "CleanerCore/Files/AppInfo.h"
#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace loftmere {

namespace {

constexpr std::array<std::string_view, 20> cacheExclusions{
    // this program's own
    AppInfo::bundleID,
    AppInfo::name,
    // system services that do not take it well
    "com.apple.bird",
    "com.apple.cloudkit",
    "CloudKit",
    "com.apple.akd",
    "com.apple.nsurlsessiond",
    "com.apple.containermanagerd",
    "FamilyCircle",
    "com.apple.ap.adprivacyd",
    // the package caches' category
    "Homebrew",
    "Yarn",
    "pip",
    "pypoetry",
    "CocoaPods",
    "org.swift.swiftpm",
    "pnpm",
    "go-build",
    "ms-playwright",
    "JetBrains",
};

bool isExcluded(const std::string& path) {
    return std::ranges::find(cacheExclusions, lastPathComponent(path)) != cacheExclusions.end();
}

} // namespace

Result<std::vector<ScanItem>> UserCachesScanner::scan(const ScanContext& context) const {
    const PathFinding cache{.category = category(),
                            .risk = Risk::safe,
                            .reason = "App cache; rebuilt automatically when needed",
                            .minimum = 65536};
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(context.lib("Caches"))) {
        if (context.isCancelled()) break;
        context.report(category(), child);
        if (!isExcluded(child)) cache.propose(context, child, items);
    }
    return items;
}

} // namespace loftmere
