#pragma once

#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstdint>

namespace loftmere {

// No side of a thumbnail is longer; a smaller picture keeps its size.
inline constexpr int thumbnailSide = 64;

// Larger pictures are not decoded, however few bytes tell them.
inline constexpr int64_t mostPixels = 250'000'000;

// A picture brought down to a few pixels, in grey and standing upright.
struct Thumbnail {
    GreyImage image;
    int64_t pixelCount = 0; // of the picture in full
};

} // namespace loftmere
