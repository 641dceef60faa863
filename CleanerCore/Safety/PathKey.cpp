#include "CleanerCore/Safety/PathKey.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>
#include <ranges>
#include <vector>

namespace loftmere {

namespace {

constexpr int maximumLinks = 40;       // the systems give up after as many
constexpr size_t maximumKnown = 65536; // a scan of millions of folders must not keep them all in memory

// Components that are still to be walked, the next one last.
using Pending = std::vector<std::string>;

void putFirst(Pending& pending, std::string_view path) {
    for (std::string& component : splitOmittingEmpty(path, '/') | std::views::reverse) {
        pending.push_back(std::move(component));
    }
}

// Walks on from `folder`, which contains no link. Absent when there are too many links on the way.
std::optional<std::string> follow(std::string folder, std::string_view path) {
    Pending pending;
    putFirst(pending, path);
    int links = 0;
    while (!pending.empty()) {
        const std::string name = std::move(pending.back());
        pending.pop_back();
        if (name == ".") continue;
        if (name == "..") {
            folder = parentPath(folder);
            continue;
        }
        std::string here = joinPath(folder, name);
        const auto target = linkTarget(here);
        if (!target) {
            folder = std::move(here);
            continue;
        }
        if (++links > maximumLinks) return std::nullopt;
        if (target->starts_with('/')) folder = "/";
        putFirst(pending, *target);
    }
    return folder;
}

// macOS keeps "/var", "/tmp" and "/etc" in "/private" and shows them without it. Any other item that happens
// to have such a name keeps its own path.
std::string withoutPrivate(std::string path) {
    constexpr std::string_view prefix = "/private";
    if (!path.starts_with("/private/")) return path;
    std::string rest = path.substr(prefix.size());
    return sameOnDisk(path, rest) ? rest : path;
}

bool isStandard(std::string_view path) {
    if (path == "/") return true;
    while (path.starts_with('/')) {
        path.remove_prefix(1);
        const std::string_view component = path.substr(0, path.find('/'));
        if (component.empty() || component == "." || component == "..") return false;
        path.remove_prefix(component.size());
    }
    return true;
}

// The folder that ".." leads to from `path`.
std::string above(const std::string& path) {
    if (!linkTarget(path)) return parentPath(path);
    return parentPath(LinkResolver().resolve(path));
}

// Converts each component by itself, so that one that is not valid UTF-8 leaves the others comparable.
template <class Form> std::string eachComponent(std::string_view path, Form form) {
    if (isASCII(path)) return form(path);
    std::string result;
    while (true) {
        const size_t slash = path.find('/');
        result += form(path.substr(0, slash));
        if (slash == std::string_view::npos) return result;
        result += '/';
        path.remove_prefix(slash + 1);
    }
}

size_t countComponents(std::string_view path) {
    return path == "/" ? 0 : static_cast<size_t>(std::ranges::count(path, '/'));
}

} // namespace

std::string standardizedPath(std::string_view path) {
    if (!path.starts_with('/')) return standardizedPathText(path);
    if (isStandard(path)) return withoutPrivate(std::string(path));
    std::string standard = "/";
    for (const std::string& component : splitOmittingEmpty(path, '/')) {
        if (component == "..")
            standard = above(standard);
        else if (component != ".")
            standard = joinPath(standard, component);
    }
    return withoutPrivate(standard);
}

std::string normalizedPath(std::string_view path, std::string_view home) {
    if (!path.starts_with('~')) return standardizedPath(path);
    return standardizedPath(std::string(home) + std::string(path.substr(1)));
}

bool sameOnDisk(const std::string& a, const std::string& b) {
    const auto first = linkStatus(a);
    const auto second = linkStatus(b);
    return first && second && first->device == second->device && first->inode == second->inode;
}

std::string LinkResolver::resolve(const std::string& path) {
    if (const auto found = known_.find(path); found != known_.end()) return found->second;
    const std::string parent = parentPath(path);
    const auto folder = known_.find(parent);
    auto start = folder != known_.end() ? folder->second : follow("/", parent);
    auto end = start ? follow(*start, lastPathComponent(path)) : std::nullopt;
    if (known_.size() > maximumKnown) known_.clear();
    if (start) known_.emplace(parent, withoutPrivate(*std::move(start)));
    return known_.emplace(path, withoutPrivate(end ? *std::move(end) : path)).first->second;
}

PathKey::PathKey(std::string path)
    : path_(std::move(path)),
      composed_(eachComponent(path_, composedText)),
      caseless_(eachComponent(path_, caselessText)),
      components_(countComponents(path_)) {}

bool PathKey::isSame(const PathKey& other) const {
    if (caseless_ != other.caseless_) return false;
    return composed_ == other.composed_ || sameOnDisk(path_, other.path_);
}

bool PathKey::isAtOrUnder(const PathKey& root) const {
    if (!loftmere::isAtOrUnder(caseless_, root.caseless_)) return false;
    return loftmere::isAtOrUnder(composed_, root.composed_) || reaches(root);
}

// Whether the path leads through the root on this volume, though it is spelled in other letters.
bool PathKey::reaches(const PathKey& root) const {
    return sameOnDisk(path_.substr(0, lengthOfComponents(root.components_)), root.path_);
}

bool PathKey::contains(const std::string& word) const {
    if (caseless_.find(word) == std::string::npos) return false;
    if (composed_.find(word) != std::string::npos) return true;
    // In other letters it is the word only where the volume finds the same item under the caseless name.
    for (size_t i = 1; i <= components_; ++i) {
        const std::string item = path_.substr(0, lengthOfComponents(i));
        const std::string name = caselessText(lastPathComponent(item));
        if (name.find(word) == std::string::npos) continue;
        if (sameOnDisk(item, joinPath(parentPath(item), name))) return true;
    }
    return false;
}

std::string PathKey::below(const PathKey& root) const {
    const size_t length = lengthOfComponents(root.components_);
    return length + 1 < path_.size() ? path_.substr(root.components_ == 0 ? 1 : length + 1) : "";
}

size_t PathKey::lengthOfComponents(size_t count) const {
    size_t at = 0;
    for (size_t i = 0; i < count && at != std::string::npos; ++i) at = path_.find('/', at + 1);
    return std::min(at, path_.size());
}

} // namespace loftmere
