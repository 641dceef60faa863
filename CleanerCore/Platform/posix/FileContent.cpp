#include "CleanerCore/Platform/FileContent.h"

#include "CleanerCore/Platform/posix/NoAccessDate.h"
#include "CleanerCore/Support/PathText.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace loftmere {

namespace {

Result<std::string> readAll(int fd, const std::string& path, int64_t expected, int64_t limit) {
    std::string content(static_cast<size_t>(expected), '\0');
    size_t filled = 0;
    while (true) {
        if (filled == content.size()) content.resize(filled + 65536); // it may have grown since
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
        const ssize_t put = ::write(fd, content.data(), content.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return failed(Failure::posix(errno, "write", path));
        content.remove_prefix(static_cast<size_t>(put));
    }
    return {};
}

// Makes a rename in the folder survive a loss of power. Some file systems cannot; that is no failure.
void syncFolder(const std::string& folder) {
    const FileDescriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd) ::fsync(fd.get());
}

Status writeAside(int fd, const std::string& aside, const std::string& path, std::string_view content,
                  uint32_t mode) {
    struct stat old{};
    const bool replaces = ::stat(path.c_str(), &old) == 0;
    ::fchmod(fd, replaces ? (old.st_mode & 07777) : static_cast<mode_t>(mode));
    if (auto written = writeAll(fd, content, path); !written) return written;
    if (::fsync(fd) != 0) return failed(Failure::posix(errno, "write", path));
    if (::rename(aside.c_str(), path.c_str()) != 0) return failed(Failure::posix(errno, "replace", path));
    syncFolder(parentPath(path));
    return {};
}

} // namespace

Result<std::string> readFile(const std::string& path, int64_t limit) {
    // O_NONBLOCK keeps the opening of a FIFO from waiting for a writer.
    const FileDescriptor fd = openQuietly(path, O_NONBLOCK);
    if (!fd) return failed(Failure::posix(errno, "open", path));
    struct stat status{};
    if (::fstat(fd.get(), &status) != 0) return failed(Failure::posix(errno, "read", path));
    if (!S_ISREG(status.st_mode)) return failed(Failure::posix(EINVAL, "read", path));
    if (status.st_size > limit) return failed(Failure::posix(EFBIG, "read", path));
    return readAll(fd.get(), path, status.st_size, limit);
}

Status replaceFile(const std::string& path, std::string_view content, uint32_t mode) {
    std::string aside = path + ".XXXXXX";
    const FileDescriptor fd(::mkstemp(aside.data()));
    if (!fd) return failed(Failure::posix(errno, "write", path));
    ::fcntl(fd.get(), F_SETFD, FD_CLOEXEC);
    auto done = writeAside(fd.get(), aside, path, content, mode);
    if (!done) ::unlink(aside.c_str());
    return done;
}

Status createDirectories(const std::string& path, uint32_t mode) {
    if (::mkdir(path.c_str(), static_cast<mode_t>(mode)) == 0) return {};
    const int error = errno;
    struct stat status{};
    if (error == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return {};
    const std::string parent = parentPath(path);
    if (error != ENOENT || parent.empty() || parent == path) {
        return failed(Failure::posix(error, "create the folder", path));
    }
    if (auto made = createDirectories(parent, 0755); !made) return made;
    if (::mkdir(path.c_str(), static_cast<mode_t>(mode)) == 0 || errno == EEXIST) return {};
    return failed(Failure::posix(errno, "create the folder", path));
}

} // namespace loftmere
