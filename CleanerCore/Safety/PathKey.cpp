#include "CleanerCore/Safety/PathKey.h"

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <algorithm>

namespace loftmere {

namespace {

// Each component by itself, so that one that is not valid UTF-8 leaves the others comparable.
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

// Whether the path leads through the root on this volume, though it is written in other letters.
bool PathKey::reaches(const PathKey& root) const {
    return sameOnDisk(path_.substr(0, lengthOfComponents(root.components_)), root.path_);
}

bool PathKey::contains(const std::string& word) const {
    if (caseless_.find(word) == std::string::npos) return false;
    if (composed_.find(word) != std::string::npos) return true;
    // In other letters: it is the word where the volume finds the same item under the caseless name.
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

bool sameOnDisk(const std::string& a, const std::string& b) {
    const auto first = linkStatus(a);
    const auto second = linkStatus(b);
    return first && second && first->device == second->device && first->inode == second->inode;
}

} // namespace loftmere
