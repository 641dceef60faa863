#pragma once

#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace loftmere {

// The content of a regular file, open for reading. Folders, FIFOs, devices and cloud placeholders are refused
// without being opened, nothing is waited for, and the access date stays as it was where the system allows
// it. One thread at a time.
class RegularFile {
public:
    // A final link is followed. Absent when there is no regular file that can be read.
    static std::optional<RegularFile> open(const std::string& path);

    // The very file that `listed` tells of, a final link not followed. Absent as well when another one stands
    // there by now, or when it has changed since.
    static std::optional<RegularFile> openUnchanged(const std::string& path, const FileStatus& listed);

    // Fills the block from `offset` on and answers how many bytes there were: fewer than asked only at the
    // end of the file. Absent when they cannot be read.
    std::optional<size_t> read(int64_t offset, std::span<std::byte> block) const;

    // Its bytes at this moment.
    int64_t size() const;

    // The same open file with an owner of its own. Absent when there are no more descriptors to be had.
    std::optional<RegularFile> duplicate() const;

    // Tells the system that these bytes will be wanted soon. Answers at once; a hint, so it never fails.
    void expect(int64_t offset, int64_t length) const;

private:
    explicit RegularFile(FileDescriptor fd) : fd_(std::move(fd)) {}

    FileDescriptor fd_;
};

// Both tell of one file with the same size and date of modification, and so, as far as the file system can
// tell, with the same content.
bool isSameUnchangedFile(const FileStatus& a, const FileStatus& b);

} // namespace loftmere
