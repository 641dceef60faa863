#include "CleanerCore/Platform/posix/FileSystem.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/RemovalParts.h"

#include <sys/attr.h>
#include <sys/param.h>
#include <sys/resource.h>

#include <algorithm>
#include <limits>

namespace loftmere {

namespace {

FileType typeOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG: return FileType::regular;
    case S_IFDIR: return FileType::directory;
    case S_IFLNK: return FileType::symlink;
    default: return FileType::other;
    }
}

// When the item came into its folder, which only getattrlist reports.
std::optional<Date> addedDate(int folder, const char* name, FinalLink link) {
    struct __attribute__((packed)) Answer {
        uint32_t length;
        timespec added;
    } answer{};
    attrlist wanted{};
    wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
    wanted.commonattr = ATTR_CMN_ADDEDTIME;
    const unsigned long options = link == FinalLink::keep ? FSOPT_NOFOLLOW : 0;
    if (::getattrlistat(folder, name, &wanted, &answer, sizeof answer, options) != 0) return std::nullopt;
    const timespec added = answer.added;
    if (added.tv_sec == 0) return std::nullopt;
    return dateFrom(added);
}

FileStatus statusFrom(const struct stat& raw) {
    FileStatus status;
    status.type = typeOf(raw.st_mode);
    status.device = static_cast<uint64_t>(raw.st_dev);
    status.inode = raw.st_ino;
    status.links = raw.st_nlink;
    status.mode = raw.st_mode & 07777U;
    status.size = raw.st_size;
    status.allocated = raw.st_blocks * 512;
    status.modified = dateFrom(raw.st_mtimespec);
    status.accessed = dateFrom(raw.st_atimespec);
    status.statusChanged = dateFrom(raw.st_ctimespec);
    status.created = dateFrom(raw.st_birthtimespec);
    status.placeholder = (raw.st_flags & SF_DATALESS) != 0;
    return status;
}

} // namespace

std::expected<FileStatus, int> statusAt(int folder, const char* name, FinalLink link) {
    struct stat raw{};
    const int flags = link == FinalLink::keep ? AT_SYMLINK_NOFOLLOW : 0;
    if (::fstatat(folder, name, &raw, flags) != 0) return std::unexpected(errno);
    FileStatus status = statusFrom(raw);
    status.addedToFolder = addedDate(folder, name, link);
    return status;
}

std::expected<FileStatus, int> descriptorStatus(int fd) {
    struct stat raw{};
    if (::fstat(fd, &raw) != 0) return std::unexpected(errno);
    return statusFrom(raw);
}

FileDescriptor tryToOpenQuietly(int at, const char* path, int flags) {
    // No flag asks for this when one item is opened. The whole process can ask, since it never reads a file
    // in order to use it.
    static const int policy =
        ::setiopolicy_np(IOPOL_TYPE_VFS_ATIME_UPDATES, IOPOL_SCOPE_PROCESS, IOPOL_ATIME_UPDATES_OFF);
    (void)policy; // without it, access dates change
    int fd = -1;
    do {
        fd = ::openat(at, path, O_RDONLY | O_CLOEXEC | flags);
    } while (fd < 0 && errno == EINTR);
    return FileDescriptor(fd);
}

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
    // Plain fsync leaves the order to the drive. The barrier keeps it without waiting for the drive's cache.
    return ::fcntl(fd, F_BARRIERFSYNC) == 0 ? 0 : ::fsync(fd);
}

void readAhead(int fd, int64_t offset, int64_t length) {
    if (length <= 0) return;
    const int64_t most = std::numeric_limits<int>::max();
    radvisory wanted{.ra_offset = offset, .ra_count = static_cast<int>(std::min(length, most))};
    ::fcntl(fd, F_RDADVISE, &wanted);
}

bool isMarkedHidden(const std::string& path) {
    struct stat raw{};
    return ::lstat(path.c_str(), &raw) == 0 && (raw.st_flags & UF_HIDDEN) != 0;
}

// The ".Trash" folder is the only one.
Status moveToOtherTrash(const Place& /*place*/, const std::string& /*home*/, Failure noTrashFolder) {
    return failed(std::move(noTrashFolder));
}

Status mayMoveToOtherTrash(const Place& /*place*/, const std::string& /*home*/) {
    return {};
}

} // namespace loftmere
