#include "CleanerCore/Platform/posix/FileSystem.h"

#include "CleanerCore/Platform/posix/Calls.h"

#include <linux/openat2.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>

#include <climits>

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

int openUninterrupted(int at, const char* path, int flags) {
    int fd = -1;
    do {
        fd = ::openat(at, path, O_RDONLY | O_CLOEXEC | flags);
    } while (fd < 0 && errno == EINTR);
    return fd;
}

constexpr int listingFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;

bool isOnAnotherDevice(int folder, int parent) {
    struct stat inner{};
    struct stat outer{};
    if (::fstat(folder, &inner) != 0 || ::fstat(parent, &outer) != 0) return true;
    return inner.st_dev != outer.st_dev;
}

// For kernels and sandboxes without openat2. This sees a volume on another device, but not a folder of the
// same volume that is bound in a second place.
FileDescriptor openComparingDevices(int at, const char* name) {
    FileDescriptor folder(::openat(at, name, listingFlags));
    if (!folder || !isOnAnotherDevice(folder.get(), at)) return folder;
    folder.reset();
    errno = EXDEV;
    return folder;
}

// How an entry is reached. A folder that is bound in a second place has one device and two mounts.
struct Reached {
    uint32_t major = 0;
    uint32_t minor = 0;
    std::optional<uint64_t> mount = std::nullopt; // absent on kernels before 5.8

    bool operator==(const Reached&) const = default;
};

// An empty name means the folder itself. A network volume's server is not asked.
std::optional<Reached> howReached(int folder, const char* name) {
    constexpr int flags = AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
    struct statx status{};
    if (::statx(folder, name, flags, STATX_MNT_ID, &status) != 0) return std::nullopt;
    Reached reached{.major = status.stx_dev_major, .minor = status.stx_dev_minor};
    if ((status.stx_mask & STATX_MNT_ID) != 0) reached.mount = status.stx_mnt_id;
    return reached;
}

} // namespace

std::expected<FileStatus, int> statusAt(int folder, const char* name, FinalLink link) {
    return readStatus(folder, name, link == FinalLink::keep ? AT_SYMLINK_NOFOLLOW : 0);
}

std::expected<FileStatus, int> descriptorStatus(int fd) {
    return readStatus(fd, "", AT_EMPTY_PATH);
}

FileDescriptor tryToOpenQuietly(int at, const char* path, int flags) {
    // Only the owner and root may ask for O_NOATIME; others get EPERM.
    FileDescriptor quiet(openUninterrupted(at, path, O_NOATIME | flags));
    if (quiet || errno != EPERM) return quiet;
    return FileDescriptor(openUninterrupted(at, path, flags));
}

bool areOnDifferentVolumes(int folder, int other) {
    const auto mine = howReached(folder, "");
    const auto theirs = howReached(other, "");
    return mine && theirs && *mine != *theirs;
}

bool isMountedOn(int folder, const char* name) {
    const auto outer = howReached(folder, "");
    const auto inner = howReached(folder, name);
    if (!outer || !inner) return false;
    // A subvolume has a device of its own and is no mount.
    return outer->mount && inner->mount ? outer->mount != inner->mount : *outer != *inner;
}

FileDescriptor openBase(int at, const char* path, Links links) {
    return FileDescriptor(
        calls::open(at, path, O_PATH | O_DIRECTORY | (links == Links::refuse ? O_NOFOLLOW : 0)));
}

FileDescriptor openForRemoval(int at, const char* name) {
    if (!calls::permitted(calls::Call::open)) return FileDescriptor();
    open_how how{};
    how.flags = listingFlags;
    how.resolve = RESOLVE_NO_XDEV | RESOLVE_NO_SYMLINKS;
    const long fd = ::syscall(SYS_openat2, at, name, &how, sizeof how);
    if (fd < 0 && (errno == ENOSYS || errno == EPERM)) return openComparingDevices(at, name);
    return FileDescriptor(static_cast<int>(fd));
}

std::string pathOfFolder(int fd) {
    const std::string link = "/proc/self/fd/" + std::to_string(fd);
    std::string path(PATH_MAX, '\0');
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    if (length <= 0 || static_cast<size_t>(length) == path.size()) return "";
    path.resize(static_cast<size_t>(length));
    return path;
}

int systemRenameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to) {
    if (!calls::permitted(calls::Call::rename)) return -1;
    const int answer = ::renameat2(fromAt, from, toAt, to, RENAME_NOREPLACE);
    // EINVAL also means that a folder would move into itself. The plain rename then says so again.
    if (answer != 0 && (errno == EINVAL || errno == ENOSYS)) errno = ENOTSUP;
    return answer;
}

int syncDescriptor(int fd) {
    return calls::permitted(calls::Call::sync) ? ::fsync(fd) : -1;
}

void readAhead(int fd, int64_t offset, int64_t length) {
    if (length <= 0) return; // the system takes 0 for all the rest
    ::posix_fadvise(fd, offset, length, POSIX_FADV_WILLNEED);
}

bool isMarkedHidden(const std::string& /*path*/) {
    return false; // only names hide
}

} // namespace loftmere
