#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

namespace loftmere {

FileDescriptor openQuietly(int at, const char* path, int flags) {
    // APFS refreshes access dates only when a volume is mounted so; there is no flag to ask for less.
    return FileDescriptor(::openat(at, path, O_RDONLY | O_CLOEXEC | flags));
}

} // namespace loftmere
