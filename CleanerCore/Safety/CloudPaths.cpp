#include "CleanerCore/Safety/CloudPaths.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Safety/PathKey.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>

namespace loftmere::CloudFiles {

namespace {

constexpr const char* unnamedProvider = "your cloud drive";

} // namespace

std::array<std::string, 2> syncRoots(const std::string& home) {
    return {home + "/Library/Mobile Documents", home + "/Library/CloudStorage"};
}

bool isSynced(const std::string& path, const std::string& home) {
    const PathKey key(normalizedPath(path, home));
    return std::ranges::any_of(syncRoots(home),
                               [&](const std::string& root) { return key.isAtOrUnder(PathKey(root)); });
}

std::string providerName(const std::string& path, const std::string& home) {
    const PathKey key(normalizedPath(path, home));
    const auto [mobileDocuments, cloudStorage] = syncRoots(home);
    if (key.isAtOrUnder(PathKey(mobileDocuments))) return "iCloud Drive";
    if (!key.isAtOrUnder(PathKey(cloudStorage))) return unnamedProvider;
    const std::string below = key.below(PathKey(cloudStorage));
    const std::string name = below.substr(0, below.find_first_of("-/"));
    return name.empty() ? unnamedProvider : name;
}

} // namespace loftmere::CloudFiles

namespace loftmere::CloudEvictor {

namespace {

std::string withoutEvery(const std::string& part, std::string text) {
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
        text.erase(at, part.size());
    }
    return text;
}

} // namespace

std::vector<std::string> cloudRoots(const Paths& paths) {
    std::vector<std::string> roots{paths.lib("Mobile Documents")};
    for (std::string& child : FS::children(paths.lib("CloudStorage"))) {
        if (FS::isDirectory(child)) roots.push_back(std::move(child));
    }
    return roots;
}

bool isInICloud(const std::string& path, const Paths& paths) {
    return path.starts_with(paths.lib("Mobile Documents"));
}

std::string provider(const std::string& path, const Paths& paths) {
    if (isInICloud(path, paths)) return "iCloud Drive";
    const auto folders = splitOmittingEmpty(withoutEvery(paths.lib("CloudStorage") + "/", path), '/');
    if (folders.empty()) return "Cloud";
    const auto pieces = splitOmittingEmpty(folders.front(), '-');
    return pieces.empty() ? folders.front() : pieces.front();
}

} // namespace loftmere::CloudEvictor
