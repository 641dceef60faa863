#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"
#include "CleanerCore/Support/Result.h"

#include <expected>
#include <optional>
#include <string>

namespace loftmere {

class Place;

// An advisory lock, held by one owner at a time until it is released, destroyed, or the process ends. Any
// thread.
class FileLock {
public:
    // On a file that stays on disk for good: it is its lock, not its presence, that counts. Makes the parent
    // folder and the file where they are missing. Absent when another holds the lock or when the file cannot
    // be opened; never waits.
    static std::optional<FileLock> acquire(const std::string& path);

    // On the folder at a place, as `OpenFolder::lock`.
    static Result<FileLock> acquireFolder(const Place& place);

    ~FileLock() { release(); }
    FileLock(FileLock&&) noexcept = default;
    FileLock& operator=(FileLock&&) noexcept = default;

    void release();

private:
    friend class OpenFolder;
    // The errno value on failure: EWOULDBLOCK when another holds the lock.
    static std::expected<FileLock, int> onOpenFile(FileDescriptor fd);
    explicit FileLock(FileDescriptor fd) : fd_(std::move(fd)) {}

    FileDescriptor fd_;
};

} // namespace loftmere
