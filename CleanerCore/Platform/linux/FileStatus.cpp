#include "CleanerCore/Platform/posix/StatusAt.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>

namespace loftmere {

namespace {

Date dateOf(const statx_timestamp& stamp) {
    return dateFrom({.tv_sec = stamp.tv_sec, .tv_nsec = stamp.tv_nsec});
}

FileType typeOf(uint32_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG: return FileType::regular;
    case S_IFDIR: return FileType::directory;
    case S_IFLNK: return FileType::symlink;
    default: return FileType::other;
    }
}

FileStatus statusFrom(const struct statx& raw) {
    FileStatus status;
    status.type = typeOf(raw.stx_mode);
    status.device = makedev(raw.stx_dev_major, raw.stx_dev_minor);
    status.inode = raw.stx_ino;
    status.links = raw.stx_nlink;
    status.mode = raw.stx_mode & 07777U;
    status.size = static_cast<int64_t>(raw.stx_size);
    status.allocated = static_cast<int64_t>(raw.stx_blocks) * 512;
    status.modified = dateOf(raw.stx_mtime);
    status.accessed = dateOf(raw.stx_atime);
    status.statusChanged = dateOf(raw.stx_ctime);
    if ((raw.stx_mask & STATX_BTIME) != 0) status.created = dateOf(raw.stx_btime);
    // Linux keeps no such date; a rename into a folder at least changes the inode.
    status.addedToFolder = status.statusChanged;
    return status;
}

std::expected<FileStatus, int> readStatus(int at, const char* path, int flags) {
    struct statx raw{};
    if (::statx(at, path, flags | AT_NO_AUTOMOUNT, STATX_BASIC_STATS | STATX_BTIME, &raw) != 0)
        return std::unexpected(errno);
    return statusFrom(raw);
}

} // namespace

std::expected<FileStatus, int> statusAt(int folder, const char* name, FinalLink link) {
    return readStatus(folder, name, link == FinalLink::keep ? AT_SYMLINK_NOFOLLOW : 0);
}

std::expected<FileStatus, int> descriptorStatus(int fd) {
    return readStatus(fd, "", AT_EMPTY_PATH);
}

} // namespace loftmere
