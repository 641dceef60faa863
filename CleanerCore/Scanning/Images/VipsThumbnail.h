#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Images/ImageKind.h"
#include "CleanerCore/Scanning/Images/Thumbnail.h"

#include <optional>

namespace loftmere {

// The thumbnail of a picture of any kind but JPEG, through libvips. Absent when the data is damaged or cut
// short, when the picture is larger than what is decoded (250 million pixels; 64 million where the format
// must be held whole), and where libvips is missing.
std::optional<Thumbnail> vipsThumbnail(int fd, ImageKind kind, const FS::CancelCheck& isCancelled);

} // namespace loftmere
