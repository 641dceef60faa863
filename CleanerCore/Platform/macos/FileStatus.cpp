#include "CleanerCore/Platform/posix/StatusAt.h"

#include <fcntl.h>
#include <sys/attr.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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

// The date on which the item came into its folder, which only getattrlist tells.
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

} // namespace loftmere
