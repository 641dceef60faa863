#include "CleanerCore/Platform/FileContent.h"

#include "CleanerCore/Platform/AppendFile.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FileSystem.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <sys/file.h>

#include <new>
#include <random>

namespace loftmere {

namespace {

Result<std::string> readAll(int fd, const std::string& path, int64_t expected, int64_t limit) {
    std::string content(static_cast<size_t>(expected), '\0');
    size_t filled = 0;
    while (true) {
        if (filled == content.size()) content.resize(filled + 65536); // the file may have grown
        const ssize_t got = ::read(fd, content.data() + filled, content.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return failed(Failure::posix(errno, "read", path));
        if (got == 0) break;
        filled += static_cast<size_t>(got);
        if (static_cast<int64_t>(filled) > limit) return failed(Failure::posix(EFBIG, "read", path));
    }
    content.resize(filled);
    return content;
}

Status writeAll(int fd, std::string_view content, const std::string& path) {
    while (!content.empty()) {
        const ssize_t put = calls::write(fd, content.data(), content.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return failed(Failure::posix(errno, "write", path));
        content.remove_prefix(static_cast<size_t>(put));
    }
    return {};
}

// Makes a rename in the folder survive a loss of power. Some file systems cannot; that is no failure.
void syncFolder(const std::string& folder) {
    const FileDescriptor fd(calls::open(AT_FDCWD, folder.c_str(), O_RDONLY | O_DIRECTORY));
    if (fd) syncDescriptor(fd.get());
}

// A new file beside `path` that nobody else has. Its name is put into `aside`.
FileDescriptor openAside(const std::string& path, std::string& aside) {
    std::random_device random;
    FileDescriptor fd;
    do {
        aside = path + "." + std::to_string(random());
        fd = FileDescriptor(calls::open(AT_FDCWD, aside.c_str(), O_WRONLY | O_CREAT | O_EXCL, 0600));
    } while (!fd && errno == EEXIST);
    return fd;
}

Status writeAside(int fd, const std::string& aside, const std::string& path, std::string_view content,
                  uint32_t mode) {
    struct stat old{};
    const bool replaces = ::stat(path.c_str(), &old) == 0;
    calls::changeMode(fd, static_cast<mode_t>(replaces ? old.st_mode & mode : mode));
    if (auto written = writeAll(fd, content, path); !written) return written;
    if (syncDescriptor(fd) != 0) return failed(Failure::posix(errno, "write", path));
    if (calls::rename(AT_FDCWD, aside.c_str(), AT_FDCWD, path.c_str()) != 0) {
        return failed(Failure::posix(errno, "replace", path));
    }
    syncFolder(parentPath(path));
    return {};
}

// A folder that exists is as good as a new one, whatever the system says about making it again.
bool makeOrFindFolder(const std::string& path, uint32_t mode) {
    if (calls::makeFolder(AT_FDCWD, path.c_str(), static_cast<mode_t>(mode)) == 0) return true;
    const int error = errno;
    struct stat status{};
    if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return true;
    errno = error;
    return false;
}

} // namespace

Result<std::string> readFile(const std::string& path, int64_t limit) {
    // O_NONBLOCK keeps the opening of a FIFO from waiting for a writer.
    if (!calls::permitted(calls::Call::open)) return failed(Failure::posix(errno, "open", path));
    const FileDescriptor fd = openQuietly(path, O_NONBLOCK);
    if (!fd) return failed(Failure::posix(errno, "open", path));
    struct stat status{};
    if (::fstat(fd.get(), &status) != 0) return failed(Failure::posix(errno, "read", path));
    if (!S_ISREG(status.st_mode)) return failed(Failure::posix(EINVAL, "read", path));
    if (status.st_size > limit) return failed(Failure::posix(EFBIG, "read", path));
    try {
        return readAll(fd.get(), path, status.st_size, limit);
    } catch (const std::bad_alloc&) {
        return failed(Failure::posix(ENOMEM, "read", path));
    }
}

Status replaceFile(const std::string& path, std::string_view content, uint32_t mode) {
    std::string aside;
    const FileDescriptor fd = openAside(path, aside);
    if (!fd) return failed(Failure::posix(errno, "write", path));
    auto done = writeAside(fd.get(), aside, path, content, mode);
    if (!done) calls::unlink(AT_FDCWD, aside.c_str(), 0);
    return done;
}

Status createDirectories(const std::string& path, uint32_t mode) {
    if (makeOrFindFolder(path, mode)) return {};
    const int error = errno;
    const std::string parent = parentPath(path);
    if (error != ENOENT || parent.empty() || parent == path) {
        return failed(Failure::posix(error, "create the folder", path));
    }
    if (auto made = createDirectories(parent, 0755); !made) return made;
    if (makeOrFindFolder(path, mode)) return {};
    return failed(Failure::posix(errno, "create the folder", path));
}

void makePrivate(const Place& place) {
    constexpr uint32_t othersRights = 077;
    const auto status = place.status();
    if (!status || status->type == FileType::symlink || (status->mode & othersRights) == 0) return;
    calls::changeModeAt(place.folder(), place.name().c_str(), status->mode & ~othersRights);
}

Status renameExclusively(const std::string& from, const std::string& to) {
    if (renameExclusivelyAt(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str()) == 0) return {};
    return failed(Failure::posix(errno, "move", from));
}

Result<AppendFile> AppendFile::open(const std::string& path, FinalLink link) {
    const int flags = O_RDWR | O_APPEND | O_CREAT | O_NONBLOCK | (link == FinalLink::refuse ? O_NOFOLLOW : 0);
    FileDescriptor fd(calls::open(AT_FDCWD, path.c_str(), flags, 0600));
    if (!fd && errno == ENOENT) {
        if (auto made = createDirectories(parentPath(path)); !made) return failed(std::move(made.error()));
        fd = FileDescriptor(calls::open(AT_FDCWD, path.c_str(), flags, 0600));
    }
    if (!fd) return failed(Failure::posix(errno, "write", path));
    const auto status = descriptorStatus(fd.get());
    if (!status) return failed(Failure::posix(status.error(), "write", path));
    if (status->type != FileType::regular)
        return failed(Failure::saying("Could not write " + printable(path) + ": it is no regular file"));
    return AppendFile(std::move(fd), path);
}

bool AppendFile::endsInTornLine() const {
    struct stat status{};
    char last = '\n';
    if (::fstat(fd_.get(), &status) != 0 || status.st_size == 0) return false;
    return ::pread(fd_.get(), &last, 1, status.st_size - 1) == 1 && last != '\n';
}

Status AppendFile::append(std::string_view lines) {
    std::string ended;
    if (endsInTornLine()) lines = ended = "\n" + std::string(lines);
    return writeAll(fd_.get(), lines, path_);
}

Status AppendFile::sync() {
    if (syncDescriptor(fd_.get()) == 0) return {};
    return failed(Failure::posix(errno, "write", path_));
}

std::optional<FileLock> FileLock::acquire(const std::string& path) {
    (void)createDirectories(parentPath(path)); // opening the file shows whether it worked
    FileDescriptor fd(calls::open(AT_FDCWD, path.c_str(), O_RDWR | O_CREAT, 0644));
    if (!fd || ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return std::nullopt;
    return FileLock(std::move(fd));
}

std::expected<FileLock, int> FileLock::onOpenFile(FileDescriptor fd) {
    const bool isHeld = fd && ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (!fd || isHeld) return std::unexpected(errno);
    return FileLock(std::move(fd));
}

void FileLock::release() {
    // Closing is not enough while a child process that is just being started shares the descriptor.
    if (fd_) ::flock(fd_.get(), LOCK_UN);
    fd_.reset();
}

} // namespace loftmere
