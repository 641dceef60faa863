#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

#include <cerrno>

namespace loftmere {

FileDescriptor openQuietly(int at, const char* path, int flags) {
    // Only the owner and root may ask for O_NOATIME; others are told EPERM.
    FileDescriptor quiet(::openat(at, path, O_RDONLY | O_CLOEXEC | O_NOATIME | flags));
    if (quiet || errno != EPERM) return quiet;
    return FileDescriptor(::openat(at, path, O_RDONLY | O_CLOEXEC | flags));
}

} // namespace loftmere
