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

} // namespace loftmere
