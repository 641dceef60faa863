#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <string>

namespace loftmere {

// Opens for reading, relative to the folder `at`, without refreshing the item's access date: O_NOATIME where
// the system has it and the item is ours, else plain. `flags` are added to O_RDONLY | O_CLOEXEC. Waits a
// little for others to close theirs when there are no more descriptors to be had. errno tells why an answer
// holds no descriptor.
FileDescriptor openQuietly(int at, const char* path, int flags);

// The same by a whole path. One that holds a NUL names nothing.
FileDescriptor openQuietly(const std::string& path, int flags);

// One attempt at it, in the system's own way.
FileDescriptor tryToOpenQuietly(int at, const char* path, int flags);

} // namespace loftmere
