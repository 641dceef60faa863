#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <optional>
#include <string>

namespace loftmere {

// An advisory lock on a file, held by one process at a time until it is released, destroyed, or the process
// ends. The file stays on disk for good: it is its lock, not its presence, that counts.
class FileLock {
public:
    // Makes the parent folder and the file where they are missing. Absent when another holds the lock or when
    // the file cannot be opened; never waits. Any thread.
    static std::optional<FileLock> acquire(const std::string& path);

    void release() { fd_.reset(); }

private:
    explicit FileLock(FileDescriptor fd) : fd_(std::move(fd)) {}

    FileDescriptor fd_;
};

} // namespace loftmere
