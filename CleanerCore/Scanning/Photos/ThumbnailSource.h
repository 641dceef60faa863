#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <optional>

namespace loftmere {

// The thumbnail of a picture file, always made from the picture itself and never from a preview stored beside
// it. Goes by the content, not by the name; JPEG, PNG, TIFF, WebP, HEIF and GIF are read, of several pictures
// the first. Absent for whatever cannot be decoded: no picture, damaged, cut short, larger than what is
// decoded in bounded memory, or `isCancelled` (asked often, on the calling thread) answers true. Any thread.
std::optional<Thumbnail> readThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled);

} // namespace loftmere
