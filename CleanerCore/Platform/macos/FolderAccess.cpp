#include "CleanerCore/Platform/posix/FolderAccess.h"

#include "CleanerCore/Platform/posix/Calls.h"

#include <sys/param.h>

namespace loftmere {

bool areOnDifferentVolumes(int folder, int other) {
    struct stat mine{};
    struct stat theirs{};
    if (::fstat(folder, &mine) != 0 || ::fstat(other, &theirs) != 0) return false;
    return mine.st_dev != theirs.st_dev;
}

bool isMountedOn(int folder, const char* name) {
    struct stat outer{};
    struct stat inner{};
    if (::fstat(folder, &outer) != 0 || ::fstatat(folder, name, &inner, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    return outer.st_dev != inner.st_dev;
}

FileDescriptor openBase(int at, const char* path, Links links) {
    return FileDescriptor(
        calls::open(at, path, O_RDONLY | O_DIRECTORY | (links == Links::refuse ? O_NOFOLLOW : 0)));
}

FileDescriptor openForRemoval(int at, const char* name) {
    FileDescriptor folder(calls::open(at, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK));
    struct stat inner{};
    struct stat outer{};
    if (!folder) return folder;
    if (::fstat(folder.get(), &inner) == 0 && ::fstat(at, &outer) == 0 && inner.st_dev == outer.st_dev) {
        return folder;
    }
    folder.reset();
    errno = EXDEV;
    return folder;
}

std::string pathOfFolder(int fd) {
    char path[MAXPATHLEN] = {};
    return ::fcntl(fd, F_GETPATH, path) == 0 ? path : "";
}

int systemRenameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to) {
    if (!calls::permitted(calls::Call::rename)) return -1;
    return ::renameatx_np(fromAt, from, toAt, to, RENAME_EXCL);
}

int syncDescriptor(int fd) {
    if (!calls::permitted(calls::Call::sync)) return -1;
    // Plain fsync leaves the order to the drive; the barrier keeps it without waiting for the drive's cache.
    return ::fcntl(fd, F_BARRIERFSYNC) == 0 ? 0 : ::fsync(fd);
}

} // namespace loftmere
