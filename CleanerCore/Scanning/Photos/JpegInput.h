#pragma once

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/RegularFile.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// clang-format off
#include <cstdio> // jpeglib.h needs it
#include <jpeglib.h>
// clang-format on

namespace loftmere {

// The bytes of a JPEG file in turn, for libjpeg as its source of data and for our own reading of a scan.
// Reads a block at a time; the file is never mapped, since one that is cut short meanwhile would
// kill the process.
class JpegInput : public jpeg_source_mgr {
public:
    JpegInput(const RegularFile& file, const FS::CancelCheck& isCancelled);
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;

    // How many bytes may be read from now on, but for a block more, none until this is told; then the file
    // counts as ended. libjpeg searches for the next marker as far as the file goes.
    void allow(int64_t bytes) { allowance_ = bytes; }

    bool isCancelled() const { return isCancelled_ && isCancelled_(); }

    // The next byte; -1 at the end of the file or of what may be read, after a failure to read, and once
    // cancelled.
    int next() {
        if (bytes_in_buffer == 0 && !refill()) return -1;
        --bytes_in_buffer;
        return *next_input_byte++;
    }

    // Passes over compressed data to the next marker that does not belong to it, and answers its code; -1
    // when there is none.
    int nextMarker();

    // Whether the rest of the file holds the mark of the picture's end.
    bool reachesEnd();

private:
    bool refill();
    void skip(size_t count);
    static boolean fillForLibrary(j_decompress_ptr decoder);
    static void skipForLibrary(j_decompress_ptr decoder, long count);

    const RegularFile& file_;
    const FS::CancelCheck& isCancelled_;
    int64_t position_ = 0;
    int64_t allowance_ = 0;
    std::vector<uint8_t> block_;
};

} // namespace loftmere
