#include "CleanerCore/Platform/RegularFile.h"

#include "CleanerCore/Platform/posix/FileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace loftmere {

namespace {

bool isReadable(const FileStatus& status) {
    return status.type == FileType::regular && !status.placeholder;
}

// O_NONBLOCK, because something else may have taken the file's place since it was looked at.
FileDescriptor openWithoutWaiting(const std::string& path, int flags) {
    return openQuietly(AT_FDCWD, path.c_str(), O_NONBLOCK | flags);
}

} // namespace

bool isSameUnchangedFile(const FileStatus& a, const FileStatus& b) {
    return a.type == b.type && a.device == b.device && a.inode == b.inode && a.size == b.size &&
           a.modified == b.modified;
}

std::optional<RegularFile> RegularFile::open(const std::string& path) {
    const auto found = targetStatus(path);
    if (!found || !isReadable(*found)) return std::nullopt;
    FileDescriptor fd = openWithoutWaiting(path, 0);
    const auto opened = descriptorStatus(fd.get());
    if (!opened || !isReadable(*opened)) return std::nullopt;
    return RegularFile(std::move(fd));
}

std::optional<RegularFile> RegularFile::openUnchanged(const std::string& path, const FileStatus& listed) {
    if (!isReadable(listed)) return std::nullopt;
    FileDescriptor fd = openWithoutWaiting(path, O_NOFOLLOW);
    const auto opened = descriptorStatus(fd.get());
    if (!opened || !isSameUnchangedFile(*opened, listed)) return std::nullopt;
    return RegularFile(std::move(fd));
}

std::optional<size_t> RegularFile::read(int64_t offset, std::span<std::byte> block) const {
    size_t filled = 0;
    while (filled < block.size()) {
        const ssize_t got = ::pread(fd_.get(), block.data() + filled, block.size() - filled,
                                    static_cast<off_t>(offset + static_cast<int64_t>(filled)));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return std::nullopt;
        if (got == 0) break;
        filled += static_cast<size_t>(got);
    }
    return filled;
}

std::optional<RegularFile> RegularFile::duplicate() const {
    FileDescriptor fd(::fcntl(fd_.get(), F_DUPFD_CLOEXEC, 0));
    if (!fd) return std::nullopt;
    return RegularFile(std::move(fd));
}

int64_t RegularFile::size() const {
    const auto status = descriptorStatus(fd_.get());
    return status ? status->size : 0;
}

void RegularFile::expect(int64_t offset, int64_t length) const {
    readAhead(fd_.get(), offset, length);
}

} // namespace loftmere
