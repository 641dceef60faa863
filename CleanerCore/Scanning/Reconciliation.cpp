#include "CleanerCore/Removal/SafetyPolicy.h"
#include "CleanerCore/Scanning/ScanEngine.h"
#include "CleanerCore/Support/CanonicalText.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace loftmere {

namespace {

struct TextHash {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

// Which category each path belongs to. Spellings that are canonically equivalent are one path.
using Owners = std::unordered_map<std::string, CleanCategory, TextHash, std::equal_to<>>;

// The more a category knows about a file, the higher it ranks.
int ownerRank(CleanCategory category) {
    using enum CleanCategory;
    switch (category) {
    case userCaches:
    case logs:
    case crashReports:
    case trash:
    case savedAppState:
    case mailDownloads: return 1;
    case iosBackups:
    case iosUpdates:
    case oldDownloads:
    case installers:
    case largeOldFiles: return 2;
    case xcode:
    case simulators:
    case projectArtifacts:
    case packageCaches:
    case docker: return 3;
    case duplicates:
    case similarPhotos:
    case cloudLocalCopies: return 4;
    case securityThreats:
    case appBundle:
    case appLeftovers:
    case orphanedLeftovers: break;
    }
    return 5;
}

Owners ownersOf(const std::vector<CategoryResult>& results) {
    Owners owners;
    for (const CategoryResult& result : results) {
        for (const ScanItem& item : result.items) {
            if (item.path() == nullptr) continue;
            const auto [owner, isNew] = owners.try_emplace(composedText(*item.path()), result.category);
            if (!isNew && ownerRank(owner->second) < ownerRank(result.category))
                owner->second = result.category;
        }
    }
    return owners;
}

bool liesBelowAnotherFinding(std::string_view path, const Owners& owners) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    for (size_t slash = path.rfind('/'); slash != std::string_view::npos && slash >= 2;) {
        if (owners.contains(path.substr(0, slash))) return true;
        slash = path.rfind('/', slash - 1);
    }
    return false;
}

} // namespace

std::vector<CategoryResult> ScanEngine::dedupe(std::vector<CategoryResult> results,
                                               const SafetyPolicy& policy) {
    const Owners owners = ownersOf(results);
    SafetyPolicy::Batch batch(policy);
    for (CategoryResult& result : results) {
        const auto isKept = [&](const ScanItem& item) {
            const std::string* path = item.path();
            if (path == nullptr) return true;
            const std::string key = composedText(*path);
            return owners.at(key) == result.category && !liesBelowAnotherFinding(key, owners) &&
                   !std::holds_alternative<SafetyPolicy::Blocked>(batch.check(*path));
        };
        std::erase_if(result.items, std::not_fn(isKept));
        std::ranges::stable_sort(result.items, std::greater<>{}, &ScanItem::size);
    }
    std::ranges::stable_sort(results, {}, &CategoryResult::category);
    return results;
}

} // namespace loftmere
