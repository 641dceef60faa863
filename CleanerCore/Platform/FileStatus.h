#pragma once

#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

// Questions about one path. None of them changes anything, and any thread may ask.
namespace loftmere {

enum class FileType { regular, directory, symlink, other };

// What the file system says about one item.
struct FileStatus {
    FileType type = FileType::other;
    uint64_t device = 0;
    uint64_t inode = 0;
    uint64_t links = 0;
    uint32_t mode = 0;     // permission bits as in stat
    int64_t size = 0;      // logical bytes
    int64_t allocated = 0; // bytes really taken on disk
    Date modified;
    Date accessed;
    Date statusChanged;
    std::optional<Date> created;       // where the file system keeps it
    std::optional<Date> addedToFolder; // when the item came into its folder
    bool placeholder = false;          // the content is only in a cloud; reading would fetch it
};

// The item itself. A final symbolic link is not followed, even with slashes behind it. The errno value on
// failure.
std::expected<FileStatus, int> linkStatus(const std::string& path);

// The item that the path leads to, links followed. The errno value on failure.
std::expected<FileStatus, int> targetStatus(const std::string& path);

// The open item. The errno value on failure. `addedToFolder` may be absent.
std::expected<FileStatus, int> descriptorStatus(int fd);

// The text of a symbolic link; absent for anything else and for what cannot be read.
std::optional<std::string> linkTarget(const std::string& path);

// Whether the calling user may write at the path, links followed.
bool isWritable(const std::string& path);

// Whether the item itself is marked as hidden, apart from its name. False where the system has no such mark.
bool isMarkedHidden(const std::string& path);

struct DirectoryEntry {
    std::string name; // the bytes on disk, not always valid UTF-8
    FileType type;
};

// The entries of a folder, without "." and "..", in the order the system gives them. If `path` is a link, it
// is followed. The folder's access date does not change where the system allows that. Absent when the folder
// cannot be read.
std::optional<std::vector<DirectoryEntry>> readDirectory(const std::string& path);

} // namespace loftmere
