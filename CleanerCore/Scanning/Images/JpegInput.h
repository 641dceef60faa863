#pragma once

#include "CleanerCore/Files/FS.h"

#include <jpeglib.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdio> // jpeglib.h needs it
#include <vector>

namespace loftmere {

// The bytes of a JPEG file in turn, for libjpeg as its source of data and for our own reading of a scan.
// Reads with pread, a block at a time; the file is never mapped, since one that is cut short meanwhile would
// kill the process.
class JpegInput : public jpeg_source_mgr {
public:
    JpegInput(int fd, const FS::CancelCheck& isCancelled);
    JpegInput(const JpegInput&) = delete;
    JpegInput& operator=(const JpegInput&) = delete;

    // The next byte; -1 at the end of the file, after a failure to read, and once cancelled.
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

    int fd_;
    const FS::CancelCheck& isCancelled_;
    off_t position_ = 0;
    std::vector<uint8_t> block_;
};

} // namespace loftmere
