#include "CleanerCore/Support/PathText.h"

#include "CleanerCore/Support/Text.h"

#include <vector>

namespace loftmere {

std::string_view withoutTrailingSlashes(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

std::string lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/") return "/";
    return std::string(path.substr(path.rfind('/') + 1));
}

std::string pathExtension(std::string_view path) {
    const std::string name = lastPathComponent(path);
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0) return "";
    return name.substr(dot + 1);
}

std::string parentPath(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return "";
    return std::string(withoutTrailingSlashes(path.substr(0, slash == 0 ? 1 : slash)));
}

std::string joinPath(std::string_view folder, std::string_view relative) {
    while (relative.starts_with('/')) relative.remove_prefix(1);
    std::string path(folder);
    if (!path.empty() && !path.ends_with('/') && !relative.empty()) path += '/';
    return path += relative;
}

std::string standardizedPathText(std::string_view path) {
    const bool absolute = path.starts_with('/');
    std::vector<std::string> kept;
    for (std::string& component : splitOmittingEmpty(path, '/')) {
        if (component == ".") continue;
        const bool canGoUp = !kept.empty() && kept.back() != "..";
        if (component == ".." && canGoUp)
            kept.pop_back();
        else if (component != ".." || !absolute)
            kept.push_back(std::move(component));
    }
    return (absolute ? "/" : "") + joined(kept, "/");
}

bool isAtOrUnder(std::string_view path, std::string_view root) {
    if (!path.starts_with(root)) return false;
    return path.size() == root.size() || root.ends_with('/') || path[root.size()] == '/';
}

} // namespace loftmere
