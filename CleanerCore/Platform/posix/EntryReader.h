#pragma once

#include "CleanerCore/Platform/FileStatus.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace loftmere {

// One entry as the reading of its folder gives it.
struct RawEntry {
    const char* name = nullptr; // the bytes on disk, ended by NUL; they last until the next reading
    FileType type = FileType::other;
    std::optional<int64_t>
        allocated; // bytes of a regular file, where the reading gave them at no further cost
};

// Reads one folder after another through the same buffer. The position belongs to the descriptor: two threads
// may take turns in reading one folder, each with a reader of its own.
class EntryReader {
public:
    EntryReader();

    // Reads the next entries of the open folder. False at its end and on failure.
    bool read(int folder);

    // How many entries were read, without "." and "..".
    int64_t count() const { return count_; }

    // A good part of the buffer was filled, so another reading is likely to give more.
    bool isFull() const { return end_ > capacity / 2; }

    // Gives the entries that were read, one after the other. False when there are no more.
    bool next(RawEntry& entry);

private:
    static constexpr size_t capacity = size_t{32} << 10;

    std::unique_ptr<std::byte[]> buffer_;
    size_t end_ = 0;
    size_t position_ = 0;
    int64_t count_ = 0;
    int folder_ = -1;
};

// The bytes that an entry takes on disk; 0 for anything but a regular file and when it has vanished.
int64_t allocatedSize(int folder, const RawEntry& entry);

} // namespace loftmere
