#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"
#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// clang-format off
#include <cstdio> // jpeglib.h needs it
#include <jpeglib.h>
// clang-format on

// What the two ways of reading a JPEG file share: libjpeg's, and our own.
namespace loftmere {

// The bytes of a JPEG file one after the other, for libjpeg as its data source and for our own reading. Reads
// a block at a time. The file is never mapped, since a file that is cut short meanwhile would kill the
// process.
class JpegInput : public jpeg_source_mgr {
public:
    JpegInput(const RegularFile& file, const FS::CancelCheck& isCancelled);
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;

    // How many bytes may be read from now on, give or take a block; none before the first call. After them
    // the file counts as ended. Without a limit, libjpeg would search the whole file for the next marker.
    void allow(int64_t bytes) { allowance_ = bytes; }

    // Whether the file goes on after what may be read.
    bool isOverAllowance() const { return allowance_ <= 0 && position_ < file_.size(); }

    bool isCancelled() const { return isCancelled_ && isCancelled_(); }

    // The next byte. -1 at the end of the file or of what may be read, when reading fails, and once
    // cancelled.
    int next() {
        if (bytes_in_buffer == 0 && !refill()) return -1;
        --bytes_in_buffer;
        return *next_input_byte++;
    }

    // Copies compressed data, without the zeros that the file has after each byte of 0xFF. Returns how much,
    // which is less than `room` only where the data ends at a marker or with the file.
    size_t copyData(uint8_t* target, size_t room);

    // Whether `copyData` has come to a marker.
    bool isAtMarker() const { return marker_.value_or(-1) >= 0; }

    // Skips compressed data up to the next marker that is not part of it. Returns its code, or -1 when there
    // is none. After `copyData` has come to the end of the data, this is the marker there, of any kind.
    int nextMarker();

    // Whether the rest of the file has the marker that ends the picture.
    bool reachesEnd();

private:
    bool refill();
    void skip(size_t count);
    int codeAfterMark();
    static boolean fillForLibrary(j_decompress_ptr decoder);
    static void skipForLibrary(j_decompress_ptr decoder, long count);

    const RegularFile& file_;
    const FS::CancelCheck& isCancelled_;
    int64_t position_ = 0;
    int64_t allowance_ = 0;
    std::vector<uint8_t> block_;
    std::optional<int> marker_; // that ended the data, if nobody has asked for it yet; -1 for none
};

// The mean brightness of each block of 8 by 8 pixels is the picture at an eighth of its resolution, and all
// that a thumbnail needs. A progressive file starts with nothing else. In any other file each mean is
// followed by the details of its block, whose codes are stepped over.

// Whether the means of the picture can be read. `decoder` has read the header, up to the first scan's data.
bool canReadMeans(const jpeg_decompress_struct& decoder);

// The picture in the means, no side longer than `side` pixels. Absent when the data is damaged, unusual or
// cut short. A progressive file that ends before the picture does counts as cut short as well, although the
// missing part is not used here.
std::optional<GreyImage> readMeans(const jpeg_decompress_struct& decoder, JpegInput& input, int side);

} // namespace loftmere
