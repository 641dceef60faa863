#pragma once

#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstdint>

namespace loftmere {

// The likeness hash of a picture: stretched to 9 by 8 pixels, one bit for each pixel that is brighter than
// its right neighbour, from the top left in the highest bit to the bottom right in the lowest. A picture of
// one colour gives 0.
uint64_t differenceHash(const GreyImage& image);

} // namespace loftmere
