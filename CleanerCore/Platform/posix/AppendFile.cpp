#include "CleanerCore/Platform/AppendFile.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/FolderAccess.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

namespace loftmere {

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
    while (!lines.empty()) { // a second turn only when the system took less than the whole
        const ssize_t put = calls::write(fd_.get(), lines.data(), lines.size());
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return failed(Failure::posix(errno, "write", path_));
        lines.remove_prefix(static_cast<size_t>(put));
    }
    return {};
}

Status AppendFile::sync() {
    if (syncDescriptor(fd_.get()) == 0) return {};
    return failed(Failure::posix(errno, "write", path_));
}

} // namespace loftmere
