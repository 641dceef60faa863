#pragma once

#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstdint>
#include <span>

namespace loftmere {

// How a picture is to be turned to stand upright, as cameras note it: 1 to 8, 1 upright, even numbers but for
// the half turns mirrored.
inline constexpr int uprightOrientation = 1;

// The orientation that an Exif block tells, the bytes from its TIFF header on; 1 where it tells none.
int exifOrientation(std::span<const uint8_t> exif);

// The picture as it is to be seen. An orientation out of range leaves it as it is.
GreyImage turnedUpright(const GreyImage& image, int orientation);

} // namespace loftmere
