#include "CleanerCore/Safety/LinkResolver.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Safety/PathKey.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <ranges>
#include <vector>

namespace loftmere {

namespace {

constexpr int maximumLinks = 40;       // as the systems count them
constexpr size_t maximumKnown = 65536; // keeps a scan of millions of folders from holding them all

// Components still to be walked, the next one last.
using Pending = std::vector<std::string>;

void putFirst(Pending& pending, std::string_view path) {
    for (std::string& component : splitOmittingEmpty(path, '/') | std::views::reverse) {
        pending.push_back(std::move(component));
    }
}

// Walks on from `folder`, which holds no link. Absent when there are too many links on the way.
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

// macOS keeps "/var", "/tmp" and "/etc" in "/private" and shows them without it. Another item of the same
// name must keep its own path.
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

} // namespace

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

} // namespace loftmere
