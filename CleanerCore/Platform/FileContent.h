#pragma once

#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Support/Result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace loftmere {

// The whole content of a regular file of at most `limit` bytes. Anything else (a folder, a FIFO, a device, a
// larger file) is refused without waiting for it. The access date does not change where the system allows
// that. Any thread.
Result<std::string> readFile(const std::string& path, int64_t limit = int64_t{1} << 31);

// Replaces a file as a whole: a reader sees the old content or the new, also after a loss of power. A new
// file gets `mode`; an existing one keeps those of its permission bits that are in `mode` too. On failure the
// old file is unchanged and nothing is left behind. Any thread.
Status replaceFile(const std::string& path, std::string_view content, uint32_t mode = 0600);

// Creates a folder, for the user alone unless `mode` says otherwise, with all its missing parents, which
// others may enter. Success when it exists already; its mode does not change then.
Status createDirectories(const std::string& path, uint32_t mode = 0700);

// Takes all rights from the group and from others, as far as the item belongs to the user. A link is left
// alone.
void makePrivate(const Place& place);

// Moves an item within one volume in a single step. Fails with EEXIST when something is at `to`: nothing is
// ever overwritten.
Status renameExclusively(const std::string& from, const std::string& to);

} // namespace loftmere
