#include "CleanerCore/Platform/Access.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace loftmere {

std::optional<std::string> linkTarget(const std::string& path) {
    // No system keeps a longer target than it would take as a path.
    std::array<char, 4096> target; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by the call
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0) return std::nullopt;
    return std::string(target.data(), static_cast<size_t>(length));
}

bool isWritable(const std::string& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

} // namespace loftmere
