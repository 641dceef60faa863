#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <cerrno>

namespace loftmere {

FileDescriptor tryToOpenQuietly(int at, const char* path, int flags) {
    // No flag asks for it at a single opening; the process as a whole can, and never reads to use.
    static const int policy =
        ::setiopolicy_np(IOPOL_TYPE_VFS_ATIME_UPDATES, IOPOL_SCOPE_PROCESS, IOPOL_ATIME_UPDATES_OFF);
    (void)policy; // what cannot be had is done without
    int fd = -1;
    do {
        fd = ::openat(at, path, O_RDONLY | O_CLOEXEC | flags);
    } while (fd < 0 && errno == EINTR);
    return FileDescriptor(fd);
}

} // namespace loftmere
