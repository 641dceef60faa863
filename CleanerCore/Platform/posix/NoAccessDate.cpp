#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

#include <cerrno>

namespace loftmere {

FileDescriptor openQuietly(const std::string& path, int flags) {
    if (path.find('\0') == std::string::npos) return openQuietly(AT_FDCWD, path.c_str(), flags);
    errno = ENOENT;
    return FileDescriptor();
}

} // namespace loftmere
