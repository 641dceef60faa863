#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"

#include <expected>
#include <optional>
#include <string>

namespace loftmere {

// An advisory lock, held by one owner at a time until it is released, destroyed, or the process ends. A
// folder is locked with `OpenFolder::lock`. Any thread.
class FileLock {
public:
    // On a file that stays on disk for ever: its lock counts, not its presence. Creates the file and its
    // parent folders where they are missing. Absent when another holds the lock or when the file cannot be
    // opened. Never waits.
    static std::optional<FileLock> acquire(const std::string& path);

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
