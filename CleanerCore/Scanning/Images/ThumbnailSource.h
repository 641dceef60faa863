#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Images/Thumbnail.h"

#include <optional>
#include <string>

namespace loftmere {

// The thumbnail of a picture file, always made from the picture itself and never from a preview stored beside
// it. Goes by the content, not by the name; JPEG, PNG, TIFF, WebP, HEIF and GIF are read, of several pictures
// the first. Absent for whatever cannot be decoded: no picture, cut short, beyond what is decoded in bounded
// memory, not a regular file, held by the cloud only, or `isCancelled` (asked often, on the calling thread)
// answers true. The access date stays as it was where the system allows it. Any thread.
std::optional<Thumbnail> readThumbnail(const std::string& path, const FS::CancelCheck& isCancelled);

} // namespace loftmere
