#pragma once

#include "CleanerCore/Scanning/Photos/GreyImage.h"
#include "CleanerCore/Scanning/Photos/JpegInput.h"

#include <optional>

namespace loftmere {

// A progressive JPEG file starts with the mean brightness of each block of 8 by 8 pixels; that is the picture
// at an eighth of its resolution, and all that a thumbnail needs. libjpeg would hold the coefficients of the
// whole picture (3 bytes a pixel) to get at it.

// Whether the scan at hand can be read so. `decoder` has read the header, up to the first scan's data.
bool canReadFirstScan(const jpeg_decompress_struct& decoder);

// The picture out of that scan, no side longer than `side` pixels. Absent when its data is damaged, or when
// the file ends before the picture does: a file that is cut short must not pass for a whole one, though what
// is missing is not looked at here.
std::optional<GreyImage> readFirstScan(const jpeg_decompress_struct& decoder, JpegInput& input, int side);

} // namespace loftmere
