#pragma once

#include "CleanerCore/Platform/posix/FileDescriptor.h"

#include <string>

// What the systems do each in a way of their own with open folders. errno tells why something failed.
namespace loftmere {

enum class Links { follow, refuse };

// Opens a folder as the base of calls relative to it. The right to search it is enough; it cannot be listed
// or synced through this descriptor.
FileDescriptor openBase(int at, const char* path, Links links);

// Opens a folder of the folder `at` for listing: no link is followed (ENOTDIR or ELOOP), and no other volume
// is entered that is mounted there (EXDEV).
FileDescriptor openForRemoval(int at, const char* name);

// Whether the open folders are on volumes that are known to differ, or reached through different mounts of
// one where the system tells those apart.
bool areOnDifferentVolumes(int folder, int other);

// Whether something is mounted on the entry `name` of the open folder. A link is not followed.
bool isMountedOn(int folder, const char* name);

// The path of an open folder without links; empty when the system cannot tell, as for one deeper than paths
// may be long.
std::string pathOfFolder(int fd);

// renameat that fails with EEXIST when something stands at `to`. Where the file system cannot promise that,
// it looks first, and something that appears in between is replaced.
int renameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to);

// The system's own call for it; ENOTSUP where the file system has none.
int systemRenameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to);

// Puts what was written to the file, or renamed in and out of the folder, on the disk, after all that went
// before.
int syncDescriptor(int fd);

} // namespace loftmere
