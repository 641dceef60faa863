#pragma once

#include "CleanerCore/Platform/FileDescriptor.h"
#include "CleanerCore/Platform/FileStatus.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

// Files and folders through their descriptors. Most of it is done by each system in its own way. Where
// nothing else is said, errno tells why something failed.
namespace loftmere {

enum class Links { follow, refuse };

// The item `name` of the open folder, or of the working folder for AT_FDCWD. A final link is followed or is
// itself the item. The errno value on failure.
enum class FinalLink { keep, follow };
std::expected<FileStatus, int> statusAt(int folder, const char* name, FinalLink link = FinalLink::keep);

// Opens for reading, relative to the folder `at`, without refreshing the item's access date: O_NOATIME where
// the system has it and the item is ours, else plain. `flags` are added to O_RDONLY | O_CLOEXEC. When no more
// descriptors are free, it waits a little for others to close theirs.
FileDescriptor openQuietly(int at, const char* path, int flags);

// The same by a whole path. One that holds a NUL names nothing.
FileDescriptor openQuietly(const std::string& path, int flags);

// One attempt at it, in the system's own way.
FileDescriptor tryToOpenQuietly(int at, const char* path, int flags);

// All entries of a folder that is open for listing; absent when the descriptor is none.
std::optional<std::vector<DirectoryEntry>> entriesOf(const FileDescriptor& folder);

// Opens a folder as the base of calls relative to it. The right to search it is enough, but it cannot be
// listed or synced through this descriptor.
FileDescriptor openBase(int at, const char* path, Links links);

// Opens a folder of the folder `at` for listing. It follows no link (ENOTDIR or ELOOP) and enters no volume
// that is mounted there (EXDEV).
FileDescriptor openForRemoval(int at, const char* name);

// Whether the open folders are on volumes that are known to differ, or are reached through different mounts
// of one where the system can tell.
bool areOnDifferentVolumes(int folder, int other);

// Whether something is mounted on the entry `name` of the open folder. A link is not followed.
bool isMountedOn(int folder, const char* name);

// The path of an open folder without links; empty when the system does not know it, as for one deeper than
// paths may be long.
std::string pathOfFolder(int fd);

// renameat that fails with EEXIST when something is at `to`. Where the file system cannot promise that, it
// looks first, and something that appears in between is replaced.
int renameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to);

// The system's own call for it; ENOTSUP where the file system has none.
int systemRenameExclusivelyAt(int fromAt, const char* from, int toAt, const char* to);

// Puts what was written to the file, or renamed in and out of the folder, on the disk, after everything
// before it.
int syncDescriptor(int fd);

// Starts to bring a part of an open file into memory, without waiting for it.
void readAhead(int fd, int64_t offset, int64_t length);

} // namespace loftmere
