#include "CleanerCore/Platform/Place.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Support/PathText.h"

#include <dirent.h>
#include <sys/statvfs.h>

#include <climits>
#include <string_view>

namespace loftmere {

namespace {

// Takes a path of any length in pieces that the system accepts, each relative to the one before.
FileDescriptor openLongPath(std::string_view path) {
    constexpr size_t longest = 1000; // below PATH_MAX of every system
    FileDescriptor folder(AT_FDCWD);
    while (path.size() > longest) {
        const size_t cut = path.rfind('/', longest);
        if (cut == 0 || cut == std::string_view::npos) break;
        FileDescriptor next = openBase(folder.get(), std::string(path.substr(0, cut)).c_str(), Links::follow);
        if (!next) return next;
        folder = std::move(next);
        path.remove_prefix(std::min(path.find_first_not_of('/', cut), path.size()));
    }
    return openBase(folder.get(), path.empty() ? "." : std::string(path).c_str(), Links::follow);
}

bool sameItem(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// The name of `folder` in `parent`; empty when it cannot be found there.
std::string nameWithin(int parent, const struct stat& folder) {
    const int fd = calls::open(parent, ".", O_RDONLY | O_DIRECTORY);
    if (fd < 0) return "";
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(fd), ::closedir);
    while (const dirent* entry = ::readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): our own stream
        struct stat found{};
        if (::fstatat(fd, entry->d_name, &found, AT_SYMLINK_NOFOLLOW) != 0 || !sameItem(found, folder))
            continue;
        if (isEntryName(entry->d_name)) return entry->d_name;
    }
    return "";
}

// The path that the system reports, if it really leads to the folder. For a deleted folder it is invented.
std::string verifiedPath(int folder, const struct stat& status) {
    std::string path = pathOfFolder(folder);
    struct stat reached{};
    if (path.empty() || ::lstat(path.c_str(), &reached) != 0 || !sameItem(status, reached)) return "";
    return path;
}

// Where the path is too long for the system to report, this reads the way up name by name until it can.
Result<std::string> realPathOf(const FileDescriptor& folder, const std::string& asked) {
    std::string below;
    FileDescriptor upper;
    for (int at = folder.get();; at = upper.get()) {
        struct stat status{};
        if (::fstat(at, &status) != 0) return failed(Failure::posix(errno, "open", asked));
        const std::string path = verifiedPath(at, status);
        if (!path.empty()) return joinPath(path, below);
        FileDescriptor next = openBase(at, "..", Links::refuse);
        const std::string name = next ? nameWithin(next.get(), status) : "";
        if (name.empty()) return failed(Failure::posix(ENOENT, "open", asked));
        below = joinPath(name, below);
        upper = std::move(next);
    }
}

} // namespace

bool isEntryName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

OpenFolder::OpenFolder(FileDescriptor descriptor, std::string realPath)
    : open_(std::make_shared<const Open>(std::move(descriptor), std::move(realPath))) {}

Result<OpenFolder> OpenFolder::open(const std::string& path) {
    if (path.find('\0') != std::string::npos) return failed(Failure::posix(EINVAL, "open", path));
    FileDescriptor folder = openLongPath(path);
    if (!folder) return failed(Failure::posix(errno, "open", path));
    auto real = realPathOf(folder, path);
    if (!real) return failed(std::move(real.error()));
    return OpenFolder(std::move(folder), std::move(*real));
}

std::expected<FileStatus, int> OpenFolder::status() const {
    return descriptorStatus(descriptor());
}

bool OpenFolder::isOnAnotherVolume(const OpenFolder& other) const {
    return areOnDifferentVolumes(descriptor(), other.descriptor());
}

bool OpenFolder::isReadOnly() const {
    struct statvfs volume{};
    return ::fstatvfs(descriptor(), &volume) == 0 && (volume.f_flag & ST_RDONLY) != 0;
}

Place OpenFolder::entry(const std::string& name) const {
    return {*this, name};
}

Result<OpenFolder> OpenFolder::subfolder(const std::string& name, Missing missing) const {
    std::string path = joinPath(realPath(), name);
    const mode_t mode = missing == Missing::createPrivate ? 0700 : 0755;
    if (missing != Missing::fail && calls::makeFolder(descriptor(), name.c_str(), mode) != 0 &&
        errno != EEXIST) {
        return failed(Failure::posix(errno, "create the folder", path));
    }
    FileDescriptor inner = openBase(descriptor(), name.c_str(), Links::refuse);
    if (!inner) return failed(Failure::posix(errno, "open", path));
    return OpenFolder(std::move(inner), std::move(path));
}

std::optional<std::vector<DirectoryEntry>> OpenFolder::list() const {
    return entriesOf(openQuietly(descriptor(), ".", O_DIRECTORY));
}

Status OpenFolder::sync() const {
    const FileDescriptor listing(calls::open(descriptor(), ".", O_RDONLY | O_DIRECTORY));
    if (listing && syncDescriptor(listing.get()) == 0) return {};
    return failed(Failure::posix(errno, "write", realPath()));
}

Result<FileLock> OpenFolder::lock() const {
    auto lock = FileLock::onOpenFile(FileDescriptor(calls::open(descriptor(), ".", O_RDONLY | O_DIRECTORY)));
    if (!lock) return failed(Failure::posix(lock.error(), "lock", realPath()));
    // Whoever held the lock before may have deleted the folder.
    if (!isStillThere()) return failed(Failure::posix(ENOENT, "lock", realPath()));
    return std::move(*lock);
}

bool OpenFolder::isStillThere() const {
    const FileDescriptor found = openLongPath(realPath());
    struct stat now{};
    struct stat opened{};
    return found && ::fstat(found.get(), &now) == 0 && ::fstat(descriptor(), &opened) == 0 &&
           sameItem(now, opened);
}

Place::Place(OpenFolder parent, std::string name)
    : parent_(std::move(parent)), name_(std::move(name)), realPath_(joinPath(parent_.realPath(), name_)) {}

Result<Place> Place::open(const std::string& path) {
    // The text is cut, not tidied: ".." after a link means what the system says it means.
    const std::string_view trimmed = withoutTrailingSlashes(path);
    const size_t slash = trimmed.rfind('/');
    const bool isBare = slash == std::string_view::npos;
    const std::string name(trimmed.substr(isBare ? 0 : slash + 1));
    if (!isEntryName(name)) return failed(Failure::posix(EINVAL, "open", path));
    auto parent = OpenFolder::open(isBare ? "." : std::string(trimmed.substr(0, slash + 1)));
    if (!parent) return failed(std::move(parent.error()));
    return parent->entry(name);
}

std::optional<Place> Place::nearest(std::string path) {
    while (true) {
        auto place = open(path);
        if (place) return std::move(*place);
        if (place.error().code != ENOENT || path == "/") return std::nullopt;
        path = parentPath(path);
    }
}

std::expected<FileStatus, int> Place::status() const {
    return statusAt(folder(), name_.c_str(), FinalLink::keep);
}

bool Place::isMountPoint() const {
    return isMountedOn(folder(), name_.c_str());
}

} // namespace loftmere
