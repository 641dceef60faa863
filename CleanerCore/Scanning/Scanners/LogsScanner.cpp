#include "CleanerCore/Scanning/Scanners/LogsScanner.h"

#include "CleanerCore/Files/AppInfo.h"
#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/PathFinding.h"
#include "CleanerCore/Support/PathText.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

// Enough entries to meet a live file in any but the largest log folders.
constexpr int entriesLookedAt = 4000;

// The crash reports have a category of their own, and this program's own logs stay.
bool isExcluded(const std::string& path) {
    const std::string name = lastPathComponent(path);
    return name == "DiagnosticReports" || name == AppInfo::name;
}

} // namespace

Result<std::vector<ScanItem>> LogsScanner::scan(const ScanContext& context) const {
    const Date cutoff = context.daysAgo(context.config.logAgeDays);
    const PathFinding log{.category = category(),
                          .risk = Risk::safe,
                          .reason =
                              fmt::format("Log files untouched for {}+ days", context.config.logAgeDays)};
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(context.lib("Logs"))) {
        if (isExcluded(child)) continue;
        if (context.isCancelled()) break;
        // Judged by its newest entry, so that one live file keeps the whole folder.
        const auto newest = FS::newestModification(child, entriesLookedAt);
        if (!newest || *newest >= cutoff) continue;
        context.report(category(), child);
        if (FS::exists(child)) log.propose(context, child, items);
    }
    return items;
}

} // namespace loftmere
