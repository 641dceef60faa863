#include "CleanerCore/Scanning/Photos/JpegCodes.h"

#include <algorithm>

namespace loftmere {

namespace {

constexpr size_t mostBytesHeld = 65536;

// No unit is longer: it has up to 10 blocks, each of 64 codes of up to 16 bits with values of up to 15.
constexpr size_t longestUnit = size_t{10} * 64 * 31 / 8;
// What a cursor may read beyond a unit.
constexpr size_t margin = longestUnit + 2 * sizeof(uint64_t);

} // namespace

void JpegBits::Cursor::giveBack(unsigned bits) {
    const unsigned back = count + bits;
    next -= (back + 7) / 8;
    window = 0;
    count = 0;
    refill();
    take((8 - back % 8) % 8);
}

JpegBits::JpegBits(JpegInput& input)
    : cursor{}, input_(input), data_(mostBytesHeld + margin), end_(data_.data()), safeBefore_(end_) {
    cursor.next = end_;
}

int64_t JpegBits::bitsLeft() const {
    return (end_ - cursor.next) * 8 + int64_t{cursor.count};
}

// Reads on in the file, after moving what is left to the start.
bool JpegBits::advance() {
    if (hasEnded_) return bitsLeft() >= 0;
    const uint8_t* const from = cursor.next - (cursor.count + 7) / 8;
    const auto left = size_t(end_ - from);
    std::memmove(data_.data(), from, left);
    cursor.next = data_.data() + (cursor.next - from);
    const size_t room = mostBytesHeld - left;
    const size_t copied = input_.copyData(data_.data() + left, room);
    hasEnded_ = copied < room;
    uint8_t* const end = data_.data() + left + copied;
    end_ = end;
    safeBefore_ = hasEnded_ ? end : end - margin;
    if (hasEnded_) std::memset(end, 0, margin);
    return true;
}

int JpegBits::restart() {
    if (!hasEnded_) advance();
    const int64_t left = bitsLeft();
    if (!hasEnded_ || left < 0 || left >= 8) return -1;
    const int marker = input_.nextMarker();
    if (marker < JPEG_RST0 || marker >= JPEG_RST0 + 8) return -1;
    end_ = safeBefore_ = data_.data();
    cursor = {.next = end_, .window = 0, .count = 0};
    hasEnded_ = false;
    return marker - JPEG_RST0;
}

JpegCode::JpegCode(const JHUFF_TBL& table) {
    std::ranges::copy(table.huffval, symbols_.begin());
    uint32_t code = 0;
    uint32_t count = 0;
    for (size_t length = 1; length <= 16; ++length) {
        first_[length] = code;
        offset_[length] = count;
        code += table.bits[length];
        count += table.bits[length];
        behind_[length] = code;
        // A code of ones alone is not allowed: they fill up the last byte.
        if ((table.bits[length] > 0 && code >= (1U << length)) || count > symbols_.size()) return;
        code <<= 1;
    }
    isValid_ = true;
}

JpegCode::Found JpegCode::find(uint32_t next16) const {
    for (unsigned length = 1; length <= 16; ++length) {
        const uint32_t code = next16 >> (16 - length);
        if (code >= first_[length] && code < behind_[length]) {
            return {uint8_t(length), symbols_[offset_[length] + code - first_[length]]};
        }
    }
    return {};
}

DifferenceCodes::DifferenceCodes(const JHUFF_TBL& table) : code_(table), isValid_(code_.isValid()) {
    if (!isValid_) return;
    code_.forEach(quickBits, [&](uint32_t code, unsigned length, uint8_t symbol) {
        const unsigned rest = quickBits - length;
        std::fill_n(quick_.begin() + (code << rest), size_t{1} << rest,
                    JpegCode::Found{uint8_t(length), symbol});
    });
    code_.forEach(16, [&](uint32_t, unsigned, uint8_t symbol) { isValid_ &= symbol <= largestSize; });
}

DetailCodes::Step DetailCodes::stepFor(unsigned length, uint8_t symbol) {
    const unsigned zeros = symbol >> 4;
    const unsigned size = symbol & 15U;
    const bool isEndOfBlock = size == 0 && zeros != 15;
    return {.bits = uint8_t(length + size), .details = uint8_t(isEndOfBlock ? endOfBlock : zeros + 1)};
}

DetailCodes::DetailCodes(const JHUFF_TBL& table) : code_(table) {
    if (!isValid()) return;
    std::array<uint8_t, 1U << quickBits> lengths{}; // of the codes alone, without their values
    code_.forEach(quickBits, [&](uint32_t code, unsigned length, uint8_t symbol) {
        const unsigned rest = quickBits - length;
        std::fill_n(single_.begin() + (code << rest), size_t{1} << rest, stepFor(length, symbol));
        std::fill_n(lengths.begin() + (code << rest), size_t{1} << rest, uint8_t(length));
    });
    for (uint32_t bits = 0; bits < steps_.size(); ++bits) steps_[bits] = combined(bits, lengths);
}

// A code counts if all of its bits are known; those of its value need not be.
DetailCodes::Step DetailCodes::combined(uint32_t bits,
                                        const std::array<uint8_t, 1U << quickBits>& lengths) const {
    unsigned taken = 0;
    unsigned details = 0;
    while (taken < quickBits && details < endOfBlock) {
        const uint32_t rest = (bits << taken) & uint32_t(steps_.size() - 1);
        const Step step = single_[rest];
        const bool isKnown = step.bits > 0 && lengths[rest] <= quickBits - taken;
        const bool isEndOfBlock = step.details == endOfBlock;
        if (!isKnown || taken + step.bits > mostBits) break;
        if (!isEndOfBlock && details + step.details >= blockSize) break;
        taken += step.bits;
        details += step.details;
    }
    if (details == 0) return unknown;
    return {.bits = uint8_t(taken), .details = uint8_t(details)};
}

bool DetailCodes::skipOne(JpegBits::Cursor& cursor, unsigned& position) const {
    cursor.refill();
    Step step = single_[cursor.peek(quickBits)];
    if (step.bits == 0) {
        const JpegCode::Found found = code_.find(cursor.peek(16));
        if (found.length == 0) return false;
        step = stepFor(found.length, found.symbol);
    }
    cursor.take(step.bits);
    position += step.details;
    return position <= blockSize || isEnd(position);
}

} // namespace loftmere
