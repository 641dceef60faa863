#include "CleanerCore/Platform/RegularFile.h"

#include "CleanerCore/Platform/FileFlags.h"
#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace loftmere {

Result<FileDescriptor> openRegularFile(const std::string& path) {
    // O_NONBLOCK keeps the opening of a FIFO from waiting for a writer; for regular files it means nothing.
    FileDescriptor fd = openQuietly(AT_FDCWD, path.c_str(), O_NONBLOCK | O_NOCTTY);
    if (!fd) return failed(Failure::posix(errno, "open", path));
    struct stat status{};
    if (::fstat(fd.get(), &status) != 0) return failed(Failure::posix(errno, "open", path));
    if (!S_ISREG(status.st_mode)) return failed(Failure::posix(EINVAL, "read", path));
    if (isCloudPlaceholder(fd.get())) return failed(Failure::posix(EAGAIN, "read", path));
    return fd;
}

} // namespace loftmere
