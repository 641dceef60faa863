#pragma once

#include <optional>
#include <string>

namespace loftmere {

// What a symbolic link says; absent for anything else and for what cannot be read. Any thread.
std::optional<std::string> linkTarget(const std::string& path);

// Whether the calling user may write at the path, links followed. Any thread.
bool isWritable(const std::string& path);

} // namespace loftmere
