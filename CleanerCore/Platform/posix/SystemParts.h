#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"

#include <spawn.h>
#include <sys/types.h>

#include <span>
#include <string_view>

// What each system does in its own way about children and libraries.
namespace loftmere {

struct PipeEnds {
    FileDescriptor reader{};
    FileDescriptor writer{};
};

// A pipe that no child inherits by accident. On failure it has no descriptors, and errno is set.
PipeEnds makePipe();

// Makes the system close everything in the child except its three standard streams. Adds to `flags` what must
// be set with the attributes. An errno value, 0 on success.
int closeAllButStandardStreams(posix_spawn_file_actions_t& actions, short& flags);

// A descriptor that polls readable when the child has ended. None where the system has no such thing, or when
// the child has ended already; then the caller must ask again and again.
FileDescriptor openEndNotice(pid_t child);

// The paths under which a shared library may be found, in order. "{name}" and "{version}" are placeholders.
std::span<const std::string_view> libraryPaths();

} // namespace loftmere
