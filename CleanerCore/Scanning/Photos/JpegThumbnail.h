#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <optional>

namespace loftmere {

// The thumbnail of a JPEG file, read from its start. Takes an eighth of the picture's resolution out of the
// data where that is enough, in a small and fixed amount of memory. Absent when the data is damaged or cut
// short, when there is more of it than is decoded (`mostPixels`, a file of 512 MiB) and when cancelled, which
// is asked on the calling thread.
std::optional<Thumbnail> jpegThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled);

} // namespace loftmere
