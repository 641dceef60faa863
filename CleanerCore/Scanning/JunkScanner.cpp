#include "CleanerCore/Scanning/JunkScanner.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Support/PathText.h"

namespace loftmere {

Date ScanContext::daysAgo(int64_t days) const {
    return addSeconds(now, -86400.0 * static_cast<double>(days));
}

std::string ScanContext::homeURL(std::string_view relative) const {
    return joinPath(paths.home(), relative);
}

bool ScanContext::isFresh(const std::string& path) const {
    const auto modified = FS::modificationDate(path);
    return modified && secondsBetween(*modified, now) < 3600.0 * static_cast<double>(config.minItemAgeHours);
}

void PathFinding::propose(const ScanContext& context, const std::string& path, std::vector<ScanItem>& items,
                          std::optional<std::string> title) const {
    if (context.isFresh(path)) return;
    // Read before the walk, which may count as a use where access dates cannot be preserved.
    const auto lastUsed = FS::lastUsedDate(path);
    const int64_t size = FS::allocatedSize(path, context.isCancelled);
    if (size < minimum) return;
    items.push_back(ScanItem::make({.title = std::move(title),
                                    .target = PathTarget{path},
                                    .size = size,
                                    .category = category,
                                    .risk = risk,
                                    .reason = reason,
                                    .lastUsed = lastUsed}));
}

} // namespace loftmere
