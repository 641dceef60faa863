#include "CleanerCore/Scanning/Photos/JpegHuffman.h"

#include <algorithm>

namespace loftmere {

void JpegBits::fill() {
    while (count_ <= 48 && !atEnd_) {
        int byte = input_.next();
        if (byte == 0xFF) {
            int code = 0xFF;
            while (code == 0xFF) code = input_.next();
            if (code != 0) marker_ = code;
            atEnd_ = code != 0; // a zero only tells that the byte before it is data
        }
        if (byte < 0) atEnd_ = true;
        if (atEnd_) return;
        bits_ = bits_ << 8 | uint64_t(byte);
        count_ += 8;
    }
}

uint32_t JpegBits::peek16() {
    if (count_ < 16) fill();
    const uint64_t next = count_ >= 16 ? bits_ >> (count_ - 16) : bits_ << (16 - count_);
    return uint32_t(next & 0xFFFF);
}

bool JpegBits::take(int count) {
    if (count > count_) return false;
    count_ -= count;
    return true;
}

bool JpegBits::restart() {
    fill();
    const bool stands = count_ < 8 && marker_ >= JPEG_RST0 && marker_ < JPEG_RST0 + 8;
    count_ = 0;
    marker_ = 0;
    atEnd_ = !stands;
    return stands;
}

JpegHuffmanTable::JpegHuffmanTable(const JHUFF_TBL& codes) {
    std::ranges::copy(codes.huffval, symbols_.begin());
    uint32_t code = 0;
    uint32_t count = 0;
    for (size_t length = 1; length <= 16; ++length) {
        first_[length] = code;
        offset_[length] = count;
        code += codes.bits[length];
        count += codes.bits[length];
        behind_[length] = code;
        if (code > (1U << length) || count > symbols_.size()) return;
        code <<= 1;
    }
    for (uint32_t start = 0; start < quick_.size(); ++start) {
        const Code found = find(start << (16 - quickBits));
        if (found.length <= quickBits) quick_[start] = found;
    }
    isValid_ = true;
}

JpegHuffmanTable::Code JpegHuffmanTable::find(uint32_t next16) const {
    for (size_t length = 1; length <= 16; ++length) {
        const uint32_t code = next16 >> (16 - length);
        if (code >= first_[length] && code < behind_[length]) {
            return {uint8_t(length), symbols_[offset_[length] + code - first_[length]]};
        }
    }
    return {};
}

std::optional<int32_t> JpegHuffmanTable::readDifference(JpegBits& bits) const {
    const uint32_t next = bits.peek16();
    Code code = quick_[next >> (16 - quickBits)];
    if (code.length == 0) code = find(next);
    if (code.length == 0 || code.symbol > 15 || !bits.take(code.length)) return std::nullopt;
    if (code.symbol == 0) return 0;
    const auto value = int32_t(bits.peek16() >> (16 - code.symbol));
    if (!bits.take(code.symbol)) return std::nullopt;
    const int32_t half = 1 << (code.symbol - 1);
    return value >= half ? value : value - 2 * half + 1;
}

} // namespace loftmere
