#include "CleanerCore/Scanning/Images/JpegInput.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace loftmere {

namespace {

constexpr size_t blockSize = 65536;

bool belongsToData(int code) {
    return code == 0 || (code >= JPEG_RST0 && code < JPEG_RST0 + 8);
}

} // namespace

JpegInput::JpegInput(int fd, const FS::CancelCheck& isCancelled)
    : jpeg_source_mgr{}, fd_(fd), isCancelled_(isCancelled), block_(blockSize) {
    init_source = [](j_decompress_ptr) {};
    fill_input_buffer = fillForLibrary;
    skip_input_data = skipForLibrary;
    resync_to_restart = jpeg_resync_to_restart;
    term_source = [](j_decompress_ptr) {};
}

bool JpegInput::refill() {
    if (isCancelled_ && isCancelled_()) return false;
    ssize_t got = 0;
    do got = ::pread(fd_, block_.data(), block_.size(), position_);
    while (got < 0 && errno == EINTR);
    if (got <= 0) return false;
    position_ += got;
    next_input_byte = block_.data();
    bytes_in_buffer = size_t(got);
    return true;
}

void JpegInput::skip(size_t count) {
    const size_t held = std::min(count, bytes_in_buffer);
    next_input_byte += held;
    bytes_in_buffer -= held;
    position_ += off_t(count - held);
}

int JpegInput::nextMarker() {
    while (bytes_in_buffer > 0 || refill()) {
        const void* found = std::memchr(next_input_byte, 0xFF, bytes_in_buffer);
        if (found == nullptr) {
            bytes_in_buffer = 0;
            continue;
        }
        skip(size_t(static_cast<const uint8_t*>(found) - next_input_byte));
        int code = 0xFF;
        while (code == 0xFF) code = next(); // any number of them may stand before a code
        if (!belongsToData(code)) return code;
    }
    return -1;
}

bool JpegInput::reachesEnd() {
    while (true) {
        const int code = nextMarker();
        if (code < 0 || code == JPEG_EOI) return code == JPEG_EOI;
        const int high = next();
        const int low = next();
        if (low < 0) return false;
        const auto length = size_t(high << 8 | low);
        if (length > 2) skip(length - 2);
    }
}

// Nothing is made up where data is missing: what is cut short counts as damaged.
boolean JpegInput::fillForLibrary(j_decompress_ptr decoder) {
    auto* input = static_cast<JpegInput*>(decoder->src);
    if (!input->refill()) decoder->err->error_exit(reinterpret_cast<j_common_ptr>(decoder));
    return TRUE;
}

void JpegInput::skipForLibrary(j_decompress_ptr decoder, long count) {
    if (count > 0) static_cast<JpegInput*>(decoder->src)->skip(size_t(count));
}

} // namespace loftmere
