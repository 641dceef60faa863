#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"
#include "CleanerCore/Platform/FileStatus.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace loftmere {

// The content of a regular file, open for reading. Folders, FIFOs, devices and cloud placeholders are refused
// without being opened, opening never waits, and the access date does not change where the system allows
// that. One thread at a time.
class RegularFile {
public:
    // A final link is followed. Absent when there is no regular file that can be read.
    static std::optional<RegularFile> open(const std::string& path);

    // The very file that `listed` describes, a final link not followed. Absent too when another file is there
    // by now, or when it has changed.
    static std::optional<RegularFile> openUnchanged(const std::string& path, const FileStatus& listed);

    // Fills the block from `offset` on and answers how many bytes there were. They are fewer than the block
    // holds only at the end of the file. Absent when they cannot be read.
    std::optional<size_t> read(int64_t offset, std::span<std::byte> block) const;

    // The size at this moment, in bytes.
    int64_t size() const;

    // The same open file with an owner of its own. Absent when no more descriptors are free.
    std::optional<RegularFile> duplicate() const;

    // Tells the system that these bytes will soon be read. Returns at once; a hint, so it never fails.
    void expect(int64_t offset, int64_t length) const;

private:
    explicit RegularFile(FileDescriptor fd) : fd_(std::move(fd)) {}

    FileDescriptor fd_;
};

// Whether both describe one file with the same size and date of modification, and therefore, as far as the
// file system shows, with the same content.
bool isSameUnchangedFile(const FileStatus& a, const FileStatus& b);

} // namespace loftmere
