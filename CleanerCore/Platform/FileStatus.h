#pragma once

#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>

namespace loftmere {

enum class FileType { regular, directory, symlink, other };

// What the file system says of one item.
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
    bool placeholder = false;          // the content is in a cloud only; reading would fetch it
};

// The item itself, a final symbolic link not followed, slashes behind it passed over; the errno value on
// failure. Any thread.
std::expected<FileStatus, int> linkStatus(const std::string& path);

// The item that the path leads to, links followed; the errno value on failure. Any thread.
std::expected<FileStatus, int> targetStatus(const std::string& path);

// The open item; the errno value on failure. `addedToFolder` may be absent. Any thread.
std::expected<FileStatus, int> descriptorStatus(int fd);

} // namespace loftmere
