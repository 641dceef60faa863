#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace loftmere {

// Finds where paths really lead. Remembers every folder it has resolved for as long as it lives, so what it
// says may be as old as itself: make a new one right before acting. One thread at a time.
class LinkResolver {
public:
    // An absolute path with every symbolic link followed, one that leads to nothing too. What does not exist
    // stays as it is written below there; a path that leads round in circles comes back unchanged.
    std::string resolve(const std::string& path);

private:
    std::unordered_map<std::string, std::string> known_;
};

// Repeated and trailing slashes, "." and ".." taken away. In an absolute path a ".." after a link goes up
// from where the link leads, as it does for the system. "/private" at the front is dropped when the rest
// names the same item.
std::string standardizedPath(std::string_view path);

// A leading "~" replaced by the home folder, then `standardizedPath`.
std::string normalizedPath(std::string_view path, std::string_view home);

} // namespace loftmere
