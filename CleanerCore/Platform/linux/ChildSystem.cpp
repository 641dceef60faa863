#include "CleanerCore/Platform/posix/ChildSystem.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace loftmere {

PipeEnds makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return {};
    return {.reader = FileDescriptor(ends[0]), .writer = FileDescriptor(ends[1])};
}

int closeAllButStandardStreams(posix_spawn_file_actions_t& actions, short& /*flags*/) {
    // Ours are all close-on-exec; a library's need not be.
    return ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

FileDescriptor openEndNotice(pid_t child) {
    // By number: the C library has the function only of late, and not always for C++.
    return FileDescriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
}

} // namespace loftmere
