#include "CleanerCore/Platform/FileLock.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Support/PathText.h"

#include <sys/file.h>

namespace loftmere {

std::optional<FileLock> FileLock::acquire(const std::string& path) {
    (void)createDirectories(parentPath(path)); // the opening tells whether it was needed
    FileDescriptor fd(calls::open(AT_FDCWD, path.c_str(), O_RDWR | O_CREAT, 0644));
    if (!fd || ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
    return FileLock(std::move(fd));
}

std::optional<FileLock> FileLock::acquireFolder(const Place& place) {
    FileDescriptor fd(calls::open(place.folder(), place.name().c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    if (!fd || (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)) return std::nullopt;
    return FileLock(std::move(fd));
}

void FileLock::release() {
    // Closing alone would not do while a child process that is just being started shares the descriptor.
    if (fd_) ::flock(fd_.get(), LOCK_UN);
    fd_.reset();
}

} // namespace loftmere
