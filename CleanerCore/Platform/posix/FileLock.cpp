#include "CleanerCore/Platform/FileLock.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Place.h"
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

std::expected<FileLock, int> FileLock::onOpenFile(FileDescriptor fd) {
    const bool isHeld = fd && ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (!fd || isHeld) return std::unexpected(errno);
    return FileLock(std::move(fd));
}

Result<FileLock> FileLock::acquireFolder(const Place& place) {
    auto folder = place.asFolder();
    if (!folder) return failed(std::move(folder.error()));
    return folder->lock();
}

void FileLock::release() {
    // Closing alone would not do while a child process that is just being started shares the descriptor.
    if (fd_) ::flock(fd_.get(), LOCK_UN);
    fd_.reset();
}

} // namespace loftmere
