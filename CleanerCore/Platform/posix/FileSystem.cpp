#include "CleanerCore/Platform/posix/FileSystem.h"

#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Platform/posix/EntryReader.h"
#include "CleanerCore/Support/PathText.h"

#include <array>
#include <chrono>
#include <thread>

namespace loftmere {

namespace {

std::expected<FileStatus, int> statusOf(const std::string& path, FinalLink link) {
    // Cut off at an embedded NUL, it would be another path than the one named.
    if (path.find('\0') != std::string::npos) return std::unexpected(ENOENT);
    return statusAt(AT_FDCWD, path.c_str(), link);
}

} // namespace

std::expected<FileStatus, int> linkStatus(const std::string& path) {
    if (!path.ends_with('/')) return statusOf(path, FinalLink::keep);
    return statusOf(std::string(withoutTrailingSlashes(path)), FinalLink::keep);
}

std::expected<FileStatus, int> targetStatus(const std::string& path) {
    return statusOf(path, FinalLink::follow);
}

std::optional<std::string> linkTarget(const std::string& path) {
    // No system keeps a longer target than it would take as a path.
    std::array<char, 4096> target; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by the call
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0) return std::nullopt;
    return std::string(target.data(), static_cast<size_t>(length));
}

bool isWritable(const std::string& path) {
    return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

std::optional<std::vector<DirectoryEntry>> readDirectory(const std::string& path) {
    return entriesOf(openQuietly(path, O_DIRECTORY));
}

std::optional<std::vector<DirectoryEntry>> entriesOf(const FileDescriptor& folder) {
    if (!folder) return std::nullopt;
    std::vector<DirectoryEntry> entries;
    thread_local EntryReader reader; // its buffer serves folder after folder
    while (reader.read(folder.get())) {
        entries.reserve(entries.size() + static_cast<size_t>(reader.count()));
        for (RawEntry entry; reader.next(entry);) entries.push_back({entry.name, entry.type});
    }
    return entries;
}

FileDescriptor openQuietly(int at, const char* path, int flags) {
    for (int attempt = 1;; ++attempt) {
        FileDescriptor opened = tryToOpenQuietly(at, path, flags);
        if (opened || (errno != EMFILE && errno != ENFILE) || attempt == 200) return opened;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

FileDescriptor openQuietly(const std::string& path, int flags) {
    if (path.find('\0') == std::string::npos) return openQuietly(AT_FDCWD, path.c_str(), flags);
    errno = ENOENT;
    return FileDescriptor();
}

int renameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to) {
    const int answer = systemRenameExclusivelyAt(fromAt, from, toAt, to);
    if (answer == 0 || errno != ENOTSUP) return answer;
    struct stat existing{};
    if (::fstatat(toAt, to, &existing, AT_SYMLINK_NOFOLLOW) == 0) errno = EEXIST;
    return errno == ENOENT ? calls::rename(fromAt, from, toAt, to) : -1;
}

} // namespace loftmere
