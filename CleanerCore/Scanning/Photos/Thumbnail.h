#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstdint>
#include <expected>
#include <span>

namespace loftmere {

// No side of a thumbnail is longer. A smaller picture keeps its size.
inline constexpr int thumbnailSide = 64;

// Larger pictures are not decoded, however few bytes they take in the file.
inline constexpr int64_t mostPixels = 250'000'000;

// A picture reduced to a few grey pixels, upright.
struct Thumbnail {
    GreyImage image;
    int64_t pixelCount = 0; // of the whole picture
};

// Why there is none.
enum class NoThumbnail {
    noPicture, // damaged, cut short or no picture at all; or cancelled meanwhile
    tooLarge,  // over the limits that bound the memory and the time for one file
};

using ThumbnailResult = std::expected<Thumbnail, NoThumbnail>;

// The thumbnail of a picture file, always made from the picture itself and never from a preview stored with
// it. Goes by the content, not by the name. Reads JPEG, PNG, TIFF, WebP, HEIF and GIF, and of several
// pictures in one file the first. `isCancelled` is asked often on the calling thread. Any thread.
ThumbnailResult readThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled);

// What readThumbnail chooses from. Each reads the file from its start.

enum class ImageKind { jpeg, png, tiff, webp, heif, gif };

// Whether the means of the blocks of a JPEG file are taken out of the data by our own reading, which is fast
// but only for whole files of the usual form. The others are left to libjpeg in either case.
enum class JpegMeans { read, leave };

// Takes an eighth of the picture's resolution out of the data where that is enough, in a small and fixed
// amount of memory. Decodes up to `mostPixels` in a file of 512 MiB. Both ways of reading give the same
// picture. This is also the fuzzers' way in.
ThumbnailResult jpegThumbnail(const RegularFile& file, const FS::CancelCheck& isCancelled,
                              JpegMeans means = JpegMeans::read);

// Any kind but JPEG, through libvips; no picture where that is missing. Decodes up to `mostPixels` in a file
// of 768 MiB or, for formats that must be held whole, 64 million pixels of 320 MiB in a file of 128 MiB.
// Large pictures are decoded one at a time, and others wait. A cancel takes effect at once, but a decoding
// that cannot be interrupted goes on by itself for a second or two.
ThumbnailResult vipsThumbnail(const RegularFile& file, ImageKind kind, const FS::CancelCheck& isCancelled);

// The orientation in an Exif block, given from its TIFF header on; `uprightOrientation` where it has none.
// This is also the fuzzers' way in.
int exifOrientation(std::span<const uint8_t> exif);

} // namespace loftmere
