#pragma once

#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace loftmere {

// One entry as the reading of its folder tells it.
struct RawEntry {
    const char* name = nullptr; // the bytes on disk, ended by NUL; they last until the next reading
    FileType type = FileType::other;
    std::optional<int64_t>
        allocated; // bytes of a regular file, where the reading told them at no further cost
};

// Reads folders through one buffer that serves for folder after folder. The position is the descriptor's: two
// threads may read one folder in turns, each with a reader of its own.
class EntryReader {
public:
    EntryReader();

    // Takes in the next entries of the open folder. False at its end and on failure.
    bool read(int folder);

    // How many entries were taken in, "." and ".." left out.
    int64_t count() const { return count_; }

    // The buffer was used up to a good part, so that another reading is likely to give more.
    bool isFull() const { return end_ > capacity / 2; }

    // The entries taken in, one after the other.
    bool next(RawEntry& entry);

private:
    static constexpr size_t capacity = size_t{32} << 10;

    std::unique_ptr<std::byte[]> buffer_;
    size_t end_ = 0;
    size_t position_ = 0;
    int64_t count_ = 0;
    int folder_ = -1;
};

// The bytes that an entry takes on disk; 0 for anything but a regular file, and when it has vanished.
int64_t allocatedSize(int folder, const RawEntry& entry);

// All entries of a folder opened for listing; absent when the descriptor is none.
std::optional<std::vector<DirectoryEntry>> entriesOf(const FileDescriptor& folder);

} // namespace loftmere
