#include "CleanerCore/Scanning/ScanEngine.h"

#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/Crew.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <string_view>
#include <unordered_map>

namespace loftmere {

namespace {

// A scanner returns its failures. An exception from a library, or for lack of memory, must not cost the other
// scanners their findings.
Result<std::vector<ScanItem>> itemsOf(const JunkScanner& scanner, const ScanContext& context) {
    try {
        return scanner.scan(context);
    } catch (const std::bad_alloc&) {
        return failed(Failure::saying("There was not enough memory"));
    } catch (const std::exception& error) {
        return failed(Failure::saying(fmt::format("Something unforeseen happened: {}", error.what())));
    }
}

CategoryResult resultOf(const JunkScanner& scanner, const ScanContext& context) {
    CategoryResult result{.category = scanner.category()};
    auto items = itemsOf(scanner, context);
    if (items)
        result.items = std::move(*items);
    else
        result.error = items.error().message;
    return result;
}

struct TextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

// Which category each path belongs to. Spellings that are canonically equivalent are one path.
using Owners = std::unordered_map<std::string, CleanCategory, TextHash, std::equal_to<>>;

// For each item of a result, its path and that path's owner; null for an item that is never left out.
using Claims = std::vector<const Owners::value_type*>;

Claims claim(const CategoryResult& result, Owners& owners) {
    Claims claims;
    claims.reserve(result.items.size());
    for (const ScanItem& item : result.items) {
        claims.push_back(nullptr);
        if (item.path() == nullptr) continue;
        const auto [entry, isNew] = owners.try_emplace(composedText(*item.path()), result.category);
        if (!isNew && traits(entry->second).ownerRank < traits(result.category).ownerRank)
            entry->second = result.category;
        claims.back() = &*entry;
    }
    return claims;
}

// Knows what is below a finding. The parents of each folder are looked up once, since a folder with many
// findings is asked about often.
class Ancestors {
public:
    explicit Ancestors(const Owners& owners) : owners_(owners) {}

    bool hide(std::string_view path) {
        while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
        const size_t slash = path.rfind('/');
        // The root of the file system does not count as a finding.
        if (slash == std::string_view::npos || slash < 2) return false;
        const std::string_view folder = path.substr(0, slash);
        if (const auto known = known_.find(folder); known != known_.end()) return known->second;
        const bool isHidden = owners_.contains(folder) || isBelowFinding(folder);
        known_.emplace(folder, isHidden);
        return isHidden;
    }

private:
    bool isBelowFinding(std::string_view path) const {
        for (size_t slash = path.rfind('/'); slash >= 2 && slash != std::string_view::npos;) {
            if (owners_.contains(path.substr(0, slash))) return true;
            slash = path.rfind('/', slash - 1);
        }
        return false;
    }

    const Owners& owners_;
    std::unordered_map<std::string, bool, TextHash, std::equal_to<>> known_;
};

} // namespace

bool Throttle::allow() {
    const std::lock_guard guard(lock_);
    const Date now = currentDate();
    // When the clock is set back, the scan must not stay silent until it has caught up.
    if (now >= last_ && secondsBetween(last_, now) < interval_) return false;
    last_ = now;
    return true;
}

ScanEngine::ScanEngine(Paths paths, AppConfig config)
    : paths_(std::move(paths)), config_(std::move(config)) {}

std::vector<CategoryResult> ScanEngine::scan(const std::set<CleanCategory>& categories,
                                             const CancelCheck& isCancelled, const Progress& progress,
                                             const StatusText& status) const {
    return scan(ScannerRegistry::scanners(categories), isCancelled, progress, status);
}

std::vector<CategoryResult> ScanEngine::scan(const ScannerRegistry::Scanners& scanners,
                                             const CancelCheck& isCancelled, const Progress& progress,
                                             const StatusText& status) const {
    Throttle throttle(statusInterval);
    const ScanContext context{
        .paths = paths_,
        .config = config_,
        .now = currentDate(),
        .isCancelled = isCancelled ? isCancelled : [] { return false; },
        .report =
            [&](CleanCategory category, const std::string& text) {
                if (status && throttle.allow()) status(category, text);
            },
    };
    std::mutex lock;
    std::vector<CategoryResult> results;
    concurrentPerform(scanners.size(), [&](size_t i) {
        CategoryResult result = resultOf(*scanners[i], context);
        if (progress) progress(result.category);
        const std::lock_guard guard(lock);
        results.push_back(std::move(result));
    });
    return dedupe(std::move(results), SafetyPolicy(paths_, config_.protectedPaths));
}

std::vector<CategoryResult> ScanEngine::dedupe(std::vector<CategoryResult> results,
                                               const SafetyPolicy& policy) {
    Owners owners;
    std::vector<Claims> claims;
    for (const CategoryResult& result : results) claims.push_back(claim(result, owners));
    Ancestors ancestors(owners);
    SafetyPolicy::Batch batch(policy);
    for (size_t r = 0; r < results.size(); ++r) {
        std::vector<ScanItem> kept;
        for (size_t i = 0; i < claims[r].size(); ++i) {
            ScanItem& item = results[r].items[i];
            const auto* claimed = claims[r][i];
            const bool isKept = claimed == nullptr ||
                                (claimed->second == results[r].category && !ancestors.hide(claimed->first) &&
                                 !std::holds_alternative<SafetyPolicy::Blocked>(batch.check(*item.path())));
            if (isKept) kept.push_back(std::move(item));
        }
        std::ranges::stable_sort(kept, std::greater<>{}, &ScanItem::size);
        results[r].items = std::move(kept);
    }
    std::ranges::stable_sort(results, {}, &CategoryResult::category);
    return results;
}

} // namespace loftmere
