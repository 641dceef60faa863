#include "CleanerCore/Scanning/Scanners/CloudLocalCopiesScanner.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace loftmere {

namespace {

constexpr int64_t smallestCopy = 25 * 1024 * 1024; // bytes on disk
constexpr int64_t unopenedDays = 30;

std::optional<ScanItem> proposal(const std::string& path, const ScanContext& context) {
    const auto file = linkStatus(path);
    if (!file || file->type != FileType::regular || file->allocated < smallestCopy) return std::nullopt;
    const Date lastUsed = std::max(file->accessed, file->modified);
    if (lastUsed >= context.daysAgo(unopenedDays)) return std::nullopt;
    return ScanItem::make({.target = EvictTarget{path},
                           .size = file->allocated,
                           .category = CleanCategory::cloudLocalCopies,
                           .risk = Risk::safe,
                           .reason = CloudEvictor::provider(path, context.paths) +
                                     ": stays in the cloud, re-downloads when opened",
                           .lastUsed = lastUsed});
}

} // namespace

Result<std::vector<ScanItem>> CloudLocalCopiesScanner::scan(const ScanContext& context) const {
    std::vector<ScanItem> items;
    for (const std::string& root : CloudEvictor::cloudRoots(context.paths)) {
        walkTree(root, [&](const WalkEntry& entry) {
            if (context.isCancelled()) return WalkStep::stop;
            if (!isValidUTF8(entry.name)) return WalkStep::skipDescendants;
            context.report(category(), entry.path);
            if (auto item = proposal(entry.path, context)) items.push_back(std::move(*item));
            return WalkStep::proceed;
        });
    }
    std::ranges::stable_sort(items, std::greater<>{}, &ScanItem::size);
    return items;
}

} // namespace loftmere
