#include "CleanerCore/Platform/Directory.h"

#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>

namespace loftmere {

namespace {

FileType statType(int folder, const char* name) {
    struct stat raw{};
    if (::fstatat(folder, name, &raw, AT_SYMLINK_NOFOLLOW) != 0) return FileType::other;
    if (S_ISDIR(raw.st_mode)) return FileType::directory;
    if (S_ISLNK(raw.st_mode)) return FileType::symlink;
    return S_ISREG(raw.st_mode) ? FileType::regular : FileType::other;
}

FileType typeOf(int folder, const dirent& entry) {
    switch (entry.d_type) {
    case DT_DIR: return FileType::directory;
    case DT_LNK: return FileType::symlink;
    case DT_REG: return FileType::regular;
    case DT_UNKNOWN: return statType(folder, entry.d_name);
    default: return FileType::other;
    }
}

bool isDotOrDotDot(std::string_view name) {
    return name == "." || name == "..";
}

} // namespace

std::optional<std::vector<DirectoryEntry>> readDirectory(const std::string& path) {
    FileDescriptor folder = openQuietly(AT_FDCWD, path.c_str(), O_DIRECTORY);
    if (!folder) return std::nullopt;
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(::fdopendir(folder.get()), ::closedir);
    if (!stream) return std::nullopt;
    (void)folder.release(); // the stream closes it

    std::vector<DirectoryEntry> entries;
    while (const dirent* entry =
               ::readdir(stream.get())) { // NOLINT(concurrency-mt-unsafe): a stream of our own
        if (isDotOrDotDot(entry->d_name)) continue;
        entries.push_back({entry->d_name, typeOf(::dirfd(stream.get()), *entry)});
    }
    return entries;
}

} // namespace loftmere
