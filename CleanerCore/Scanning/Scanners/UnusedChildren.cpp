#include "CleanerCore/Scanning/Scanners/UnusedChildren.h"

#include "CleanerCore/Files/FS.h"

namespace loftmere {

std::vector<ScanItem> unusedChildren(const ScanContext& context, const std::string& folder, int64_t days,
                                     const PathFinding& finding) {
    const Date cutoff = context.daysAgo(days);
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(folder)) {
        if (context.isCancelled()) break;
        context.report(finding.category, child);
        const auto lastUsed = FS::lastUsedDate(child);
        if (lastUsed && *lastUsed >= cutoff) continue;
        finding.propose(context, child, items);
    }
    return items;
}

} // namespace loftmere
