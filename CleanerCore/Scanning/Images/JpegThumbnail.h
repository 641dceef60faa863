#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Images/Thumbnail.h"

#include <optional>

namespace loftmere {

// The thumbnail of a JPEG file, read from its start. Takes an eighth of the picture's resolution out of the
// data where that is enough, in a small and fixed amount of memory. Absent when the data is damaged or cut
// short.
std::optional<Thumbnail> jpegThumbnail(int fd, const FS::CancelCheck& isCancelled);

} // namespace loftmere
