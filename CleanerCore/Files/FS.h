#pragma once

#include "CleanerCore/Platform/Directory.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

// Questions to the file system. All are total: what cannot be read is answered as absent, empty, false or
// zero, and nothing is ever thrown. Any thread may ask at any time. Asking does not refresh access dates
// where the system allows it.
namespace loftmere::FS {

using VolumeSpace = loftmere::VolumeSpace;
using CancelCheck = std::function<bool()>;

// Something stands at the path; a dangling link does.
bool exists(const std::string& path);

// False only when nothing can be there (no such entry, or a parent that is no folder); true when there is or
// may be something, such as below a folder that may not be read.
bool isReachable(const std::string& path);

bool isSymlink(const std::string& path);

// A real folder; a link to one is not.
bool isDirectory(const std::string& path);

// The paths of a folder's immediate entries in the system's order, hidden ones too, without ".DS_Store" and
// without names that are not valid UTF-8: those are only ever handled as part of their folder. A link given
// as `path` is followed.
std::vector<std::string> children(const std::string& path);

// The same entries by name, each with what it is itself: a link is a link. It saves asking for each.
std::vector<DirectoryEntry> entries(const std::string& path);

// A final link is not followed.
std::optional<Date> modificationDate(const std::string& path);

// When the item came into its folder, else when it was created.
std::optional<Date> addedToFolderDate(const std::string& path);

// The later of the dates of last access and last modification of the content.
std::optional<Date> lastUsedDate(const std::string& path);

// The newest modification date of a folder and of at most `limit` entries below it: a lower bound for folders
// with more. For anything but a real folder its own date.
std::optional<Date> newestModification(const std::string& path, int limit);

// Bytes really taken on disk by an item, or by all regular files below a folder. Links cost nothing and are
// not followed; each name of a hard-linked file counts. `cancel` is asked at every 2000th entry, on any
// thread and never on two at once; when it answers true, the total so far is the result.
int64_t allocatedSize(const std::string& path, const CancelCheck& cancel = nullptr);

// The decimal device number of the volume that the path leads to.
std::optional<std::string> volumeID(const std::string& path);

// Both can be read and are on one volume.
bool sameVolume(const std::string& a, const std::string& b);

// On a network's volume or an external one. False when it cannot be told.
bool isRemoteVolume(const std::string& path);

// Bytes usable for important data, with what the system would purge counted as free.
std::optional<int64_t> freeSpace(const std::string& path);

std::optional<VolumeSpace> volumeSpace(const std::string& path);

} // namespace loftmere::FS
