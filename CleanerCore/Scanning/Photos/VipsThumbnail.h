#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/ImageKind.h"
#include "CleanerCore/Scanning/Photos/Thumbnail.h"

#include <optional>

namespace loftmere {

// The thumbnail of a picture of any kind but JPEG, through libvips. Absent when the data is damaged or cut
// short, when the picture is larger than what is decoded (`mostPixels` and a file of 768 MiB; 64 million
// pixels of 320 MiB and a file of 128 MiB where the format must be held whole), when cancelled, and where
// libvips is missing. Of large ones one is decoded at a time, and others wait. `isCancelled` is asked on the
// calling thread; a cancel is felt at once, though a decoding that cannot be interrupted then goes on by
// itself for a second or two.
std::optional<Thumbnail> vipsThumbnail(const RegularFile& file, ImageKind kind,
                                       const FS::CancelCheck& isCancelled);

} // namespace loftmere
