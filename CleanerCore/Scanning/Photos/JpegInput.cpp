#include "CleanerCore/Scanning/Photos/JpegInput.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace loftmere {

namespace {

constexpr size_t blockSize = 65536;

bool belongsToData(int code) {
    return code == 0 || (code >= JPEG_RST0 && code < JPEG_RST0 + 8);
}

} // namespace

JpegInput::JpegInput(const RegularFile& file, const FS::CancelCheck& isCancelled)
    : jpeg_source_mgr{}, file_(file), isCancelled_(isCancelled), block_(blockSize) {
    init_source = [](j_decompress_ptr) {};
    fill_input_buffer = fillForLibrary;
    skip_input_data = skipForLibrary;
    resync_to_restart = jpeg_resync_to_restart;
    term_source = [](j_decompress_ptr) {};
}

bool JpegInput::refill() {
    if (allowance_ <= 0 || isCancelled()) return false;
    const size_t got = file_.read(position_, std::as_writable_bytes(std::span(block_))).value_or(0);
    position_ += int64_t(got);
    allowance_ -= int64_t(got);
    next_input_byte = block_.data();
    bytes_in_buffer = got;
    return got > 0;
}

void JpegInput::skip(size_t count) {
    const size_t held = std::min(count, bytes_in_buffer);
    next_input_byte += held;
    bytes_in_buffer -= held;
    position_ += int64_t(count - held);
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
