#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <functional>
#include <optional>

namespace loftmere {

namespace {

constexpr int64_t smallestCopy = 25 * 1024 * 1024; // allocated bytes
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

// Proposes large local copies of cloud files that were not opened for long, to be evicted and not removed.
class CloudLocalCopiesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::cloudLocalCopies; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
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
};

} // namespace

ScannerRegistry::Scanner ScannerRegistry::makeCloudLocalCopiesScanner() {
    return std::make_unique<CloudLocalCopiesScanner>();
}

} // namespace loftmere
