#include "CleanerCore/Scanning/Scanners/OldDownloadsScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

// Found as installers. A disk image with the extension "iso" may hold anything, so it counts here too.
bool isInstaller(const std::string& path) {
    const std::string extension = asciiLowercased(pathExtension(path));
    return extension == "dmg" || extension == "pkg" || extension == "mpkg";
}

} // namespace

Result<std::vector<ScanItem>> OldDownloadsScanner::scan(const ScanContext& context) const {
    const Date cutoff = context.daysAgo(context.config.oldDownloadsDays);
    const PathFinding download{.category = category(),
                               .risk = Risk::review,
                               .reason =
                                   fmt::format("Not opened in {}+ days", context.config.oldDownloadsDays)};
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(context.homeURL("Downloads"))) {
        if (context.isCancelled()) break;
        context.report(category(), child);
        if (isInstaller(child)) continue;
        if (FS::lastUsedDate(child).value_or(distantFuture) >= cutoff) continue;
        download.propose(context, child, items);
    }
    return items;
}

} // namespace loftmere
