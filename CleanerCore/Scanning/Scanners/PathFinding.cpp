#include "CleanerCore/Scanning/Scanners/PathFinding.h"

#include "CleanerCore/Files/FS.h"

namespace loftmere {

std::optional<ScanItem> PathFinding::propose(const ScanContext& context, const std::string& path,
                                             std::optional<std::string> title) const {
    if (context.isFresh(path)) return std::nullopt;
    // Asked before the walk, which may count as a use where access dates cannot be left alone.
    const auto lastUsed = FS::lastUsedDate(path);
    const int64_t size = FS::allocatedSize(path, context.isCancelled);
    if (size < minimum) return std::nullopt;
    return ScanItem::make({.title = std::move(title),
                           .target = PathTarget{path},
                           .size = size,
                           .category = category,
                           .risk = risk,
                           .reason = reason,
                           .lastUsed = lastUsed});
}

void PathFinding::propose(const ScanContext& context, const std::string& path,
                          std::vector<ScanItem>& items) const {
    if (auto item = propose(context, path)) items.push_back(std::move(*item));
}

} // namespace loftmere
