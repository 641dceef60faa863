#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <spawn.h>
#include <sys/types.h>

namespace loftmere {

// What starting and watching a child takes beyond POSIX.

struct PipeEnds {
    FileDescriptor reader{};
    FileDescriptor writer{};
};

// A pipe that no child inherits by accident; without descriptors, and with errno set, on failure.
PipeEnds makePipe();

// Has the system close everything in the child but its three standard streams. The flags to be set with the
// attributes are added to `flags`; an errno value, 0 on success.
int closeAllButStandardStreams(posix_spawn_file_actions_t& actions, short& flags);

// A descriptor that polls readable when the child has ended. None where the system has no such thing, or when
// the child has ended already; then it must be asked for again and again.
FileDescriptor openEndNotice(pid_t child);

} // namespace loftmere
