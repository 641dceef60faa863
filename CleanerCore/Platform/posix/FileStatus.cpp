#include "CleanerCore/Platform/FileStatus.h"

#include "CleanerCore/Platform/posix/StatusAt.h"
#include "CleanerCore/Support/PathText.h"

#include <fcntl.h>

#include <cerrno>

namespace loftmere {

namespace {

std::expected<FileStatus, int> statusOf(const std::string& path, FinalLink link) {
    // Cut off at an embedded NUL, another path than the one named would be judged.
    if (path.find('\0') != std::string::npos) return std::unexpected(ENOENT);
    return statusAt(AT_FDCWD, path.c_str(), link);
}

} // namespace

std::expected<FileStatus, int> linkStatus(const std::string& path) {
    if (!path.ends_with('/')) return statusOf(path, FinalLink::keep);
    return statusOf(std::string(withoutTrailingSlashes(path)), FinalLink::keep);
}

std::expected<FileStatus, int> targetStatus(const std::string& path) {
    return statusOf(path, FinalLink::follow);
}

} // namespace loftmere
