#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

// How the safety policy reads a path: in one standard form, followed to where it really leads, and compared
// with other paths as the volume itself would compare them.
namespace loftmere {

// Removes repeated and trailing slashes, "." and "..". In an absolute path a ".." after a link goes up from
// where the link leads, as it does for the system. A leading "/private" is dropped when the rest names the
// same item. Any thread.
std::string standardizedPath(std::string_view path);

// Replaces a leading "~" by the home folder, then does what `standardizedPath` does. Any thread.
std::string normalizedPath(std::string_view path, std::string_view home);

// Whether both paths name the same item, without following a final link. False when either is missing. Any
// thread.
bool sameOnDisk(const std::string& a, const std::string& b);

// Finds out where paths really lead. It remembers every folder that it has resolved, so its answers may be as
// old as the object itself: use a new one right before acting. One thread at a time.
class LinkResolver {
public:
    // The absolute path with every symbolic link followed, dangling ones too. Components that do not exist
    // stay as they are written; a path that leads in circles comes back unchanged.
    std::string resolve(const std::string& path);

private:
    std::unordered_map<std::string, std::string> known_;
};

// A standardised path prepared for comparison with many others. Spellings that Unicode calls canonically
// equivalent are equal. Upper and lower case differ, except where the volume takes both spellings for the
// same item. Immutable; any thread.
class PathKey {
public:
    explicit PathKey(std::string path);

    const std::string& path() const { return path_; }

    bool isSame(const PathKey& other) const;

    // By whole components.
    bool isAtOrUnder(const PathKey& root) const;
    bool isUnder(const PathKey& root) const { return isAtOrUnder(root) && !isSame(root); }

    // One of the two is at or under the other.
    bool overlaps(const PathKey& other) const { return isAtOrUnder(other) || other.isAtOrUnder(*this); }

    // Whether `word`, given in lower case, occurs anywhere in the path.
    bool contains(const std::string& word) const;

    // The rest of the path below `root`, without a leading slash. Only for a path at or under `root`.
    std::string below(const PathKey& root) const;

private:
    bool reaches(const PathKey& root) const;
    size_t lengthOfComponents(size_t count) const;

    std::string path_;
    std::string composed_;
    std::string caseless_;
    size_t components_;
};

} // namespace loftmere
