#pragma once

#include "CleanerCore/Support/Result.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace loftmere {

// The whole content of a regular file of at most `limit` bytes. Anything else (a folder, a FIFO, a device, a
// larger file) is refused without being waited for. The access date stays as it was where the system allows
// it. Any thread.
Result<std::string> readFile(const std::string& path, int64_t limit = int64_t{1} << 31);

// Replaces a file whole: a reader sees the old content or the new, also after a loss of power. The file's
// permission bits are kept, a new one gets `mode`. On failure the old file stands as it was and nothing is
// left behind. Any thread.
Status replaceFile(const std::string& path, std::string_view content, uint32_t mode = 0644);

// Creates a folder with all its missing parents. Success when it is there already.
Status createDirectories(const std::string& path, uint32_t mode = 0755);

// Moves an item within one volume in a single step. Fails with EEXIST when something stands at `to`: nothing
// is ever overwritten.
Status renameExclusively(const std::string& from, const std::string& to);

} // namespace loftmere
