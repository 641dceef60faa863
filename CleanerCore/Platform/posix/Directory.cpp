#include "CleanerCore/Platform/Directory.h"

#include "CleanerCore/Platform/posix/EntryReader.h"
#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

namespace loftmere {

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

std::optional<std::vector<DirectoryEntry>> readDirectory(const std::string& path) {
    return entriesOf(openQuietly(path, O_DIRECTORY));
}

} // namespace loftmere
