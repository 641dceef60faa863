#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

#include <cerrno>

namespace loftmere {

namespace {

int openUninterrupted(int at, const char* path, int flags) {
    int fd = -1;
    do {
        fd = ::openat(at, path, O_RDONLY | O_CLOEXEC | flags);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

} // namespace

FileDescriptor tryToOpenQuietly(int at, const char* path, int flags) {
    // Only the owner and root may ask for O_NOATIME; others are told EPERM.
    FileDescriptor quiet(openUninterrupted(at, path, O_NOATIME | flags));
    if (quiet || errno != EPERM) return quiet;
    return FileDescriptor(openUninterrupted(at, path, flags));
}

} // namespace loftmere
