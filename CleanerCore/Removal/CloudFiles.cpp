#include "CleanerCore/Removal/CloudFiles.h"

#include "CleanerCore/Removal/PathKey.h"
#include "CleanerCore/Removal/SafetyPolicy.h"
#include "CleanerCore/Support/PathText.h"

#include <algorithm>

namespace loftmere::CloudFiles {

namespace {

constexpr const char* unnamedProvider = "your cloud drive";

} // namespace

std::array<std::string, 2> syncRoots(const std::string& home) {
    return {home + "/Library/Mobile Documents", home + "/Library/CloudStorage"};
}

bool isSynced(const std::string& path, const std::string& home) {
    const PathKey key(SafetyPolicy::normalize(path, home));
    return std::ranges::any_of(syncRoots(home),
                               [&](const std::string& root) { return key.isAtOrUnder(PathKey(root)); });
}

std::string providerName(const std::string& path, const std::string& home) {
    const PathKey key(SafetyPolicy::normalize(path, home));
    const auto [mobileDocuments, cloudStorage] = syncRoots(home);
    if (key.isAtOrUnder(PathKey(mobileDocuments))) return "iCloud Drive";
    if (!key.isAtOrUnder(PathKey(cloudStorage))) return unnamedProvider;
    const std::string below = key.below(PathKey(cloudStorage));
    const std::string name = below.substr(0, below.find_first_of("-/"));
    return name.empty() ? unnamedProvider : name;
}

} // namespace loftmere::CloudFiles
