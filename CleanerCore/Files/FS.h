#pragma once

#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Support/ByteCount.h"
#include "CleanerCore/Support/Date.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Questions about the file system. For anything that cannot be read the answer is absent, empty, false or
// zero; nothing is ever thrown. Any thread. Asking does not change access dates, where the system allows
// that.
namespace loftmere::FS {

using VolumeSpace = loftmere::VolumeSpace;
using CancelCheck = std::function<bool()>;

// Whether there is something at the path. A dangling link is something.
bool exists(const std::string& path);

// False only when nothing can be there: there is no such entry, or a parent is not a folder. True when there
// is or may be something, for example below a folder that may not be read.
bool isReachable(const std::string& path);

bool isSymlink(const std::string& path);

// Whether it is a real folder. A link to a folder is not.
bool isDirectory(const std::string& path);

// The paths of a folder's immediate entries in the system's order, hidden ones included. ".DS_Store" is left
// out, and so are names that are not valid UTF-8, which are only ever handled as part of their folder. If
// `path` is a link, it is followed.
std::vector<std::string> children(const std::string& path);

// The same entries by name, each with its own type: a link is a link.
std::vector<DirectoryEntry> entries(const std::string& path);

// A final link is not followed.
std::optional<Date> modificationDate(const std::string& path);

// When the item came into its folder, else when it was created.
std::optional<Date> addedToFolderDate(const std::string& path);

// The later of the dates of last access and last modification of the content.
std::optional<Date> lastUsedDate(const std::string& path);

// The newest modification date of a folder and of at most `limit` entries below it, which is a lower bound
// for folders with more. The own date of anything that is not a real folder.
std::optional<Date> newestModification(const std::string& path, int limit);

// The bytes that an item, or all regular files below a folder, take on disk. Links count nothing and are not
// followed. Each name of a hard-linked file counts. `cancel` is called at every 2000th entry, on any thread
// but never on two at once. When it returns true, the result is the total so far.
int64_t allocatedSize(const std::string& path, const CancelCheck& cancel = nullptr);

// The decimal device number of the volume that the path leads to.
std::optional<std::string> volumeID(const std::string& path);

// Whether both can be read and are on one volume.
bool sameVolume(const std::string& a, const std::string& b);

// Whether the volume is remote or external. False when that is unknown.
bool isRemoteVolume(const std::string& path);

// Bytes usable for important data. Space that the system would purge for them counts as free.
std::optional<int64_t> freeSpace(const std::string& path);

std::optional<VolumeSpace> volumeSpace(const std::string& path);

// Whether a folder of this name is a package: shown and handled as one thing, such as an application, a photo
// library or a document that is stored as a folder. Judged by the extension, in any case.
bool isPackageName(std::string_view name);

// Visits what a user sees below `root`, as walkTree does, but without hidden entries and without the inside
// of packages: a package is one entry. Entries whose names are not valid UTF-8 are left out as well, since
// they are only ever handled as part of their folder.
bool walkVisibleTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

} // namespace loftmere::FS
