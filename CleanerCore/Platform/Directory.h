#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <optional>
#include <string>
#include <vector>

namespace loftmere {

struct DirectoryEntry {
    std::string name; // the bytes on disk, not always valid UTF-8
    FileType type;
};

// The entries of a folder, without "." and "..", in the order the system gives them. A link given as `path`
// is followed. The folder's access date stays as it was where the system allows it. Absent when it cannot be
// read. Any thread.
std::optional<std::vector<DirectoryEntry>> readDirectory(const std::string& path);

} // namespace loftmere
