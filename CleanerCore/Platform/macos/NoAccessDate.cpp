#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

#include <cerrno>

namespace loftmere {

FileDescriptor tryToOpenQuietly(int at, const char* path, int flags) {
    // APFS refreshes access dates only when a volume is mounted so; there is no flag to ask for less.
    int fd = -1;
    do {
        fd = ::openat(at, path, O_RDONLY | O_CLOEXEC | flags);
    } while (fd < 0 && errno == EINTR);
    return FileDescriptor(fd);
}

} // namespace loftmere
