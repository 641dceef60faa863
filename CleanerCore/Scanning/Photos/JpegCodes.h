#pragma once

#include "CleanerCore/Scanning/Photos/JpegDecoding.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

// The codes in the compressed data of a JPEG file.
namespace loftmere {

// The compressed data of a scan as bits.
class JpegBits {
public:
    // A place in the data. Whoever reads much copies it and sets it back afterwards, so that it is in the
    // processor's registers meanwhile. May move behind the end of the data, where all bits are zero.
    struct Cursor {
        // Makes at least 56 bits available.
        void refill() {
            uint64_t bytes = 0;
            std::memcpy(&bytes, next, sizeof bytes);
            if constexpr (std::endian::native == std::endian::little) bytes = __builtin_bswap64(bytes);
            window |= bytes >> count;
            next += (63 - count) >> 3;
            count |= 56;
        }

        // The next bits, from 1 to 32, without taking them.
        uint32_t peek(unsigned bits) const { return uint32_t(window >> (64 - bits)); }

        // Takes bits that are available, fewer than 64.
        void take(unsigned bits) {
            window <<= bits;
            count -= bits;
        }

        // Gives back bits that were taken.
        void giveBack(unsigned bits);

        const uint8_t* next; // the first byte of which the window does not have all bits
        uint64_t window;     // the next bits from the highest down
        unsigned count;      // how many of them are available; the others are right or zero
    };

    explicit JpegBits(JpegInput& input);

    // Prepares for reading a unit of blocks. False when more was read than there is.
    bool hold() { return cursor.next < safeBefore_ || advance(); }

    // Whether all that was read is in the data, and the file goes on after it.
    bool isWithinData() const { return !hasEnded_ || (bitsLeft() >= 0 && input_.isAtMarker()); }

    // Moves behind the marker between two stretches of data. Returns which of the eight it is, from 0 on. -1
    // when the data is not at its end or another marker ends it.
    int restart();

    Cursor cursor;

private:
    bool advance();
    int64_t bitsLeft() const;

    JpegInput& input_;
    std::vector<uint8_t> data_;
    const uint8_t* end_; // of what has been read of the file
    const uint8_t* safeBefore_;
    bool hasEnded_ = false; // nothing follows what has been read, but zeros that are not in the file
};

// A code for bytes: which bits stand for which byte.
class JpegCode {
public:
    struct Found {
        uint8_t length = 0; // 0: no code
        uint8_t symbol = 0;
    };

    explicit JpegCode(const JHUFF_TBL& table);

    // Whether the lengths in the table form a code.
    bool isValid() const { return isValid_; }

    // The code that the bits begin with.
    Found find(uint32_t next16) const;

    // Calls `visit(code, length, symbol)` for each code of at most `longest` bits.
    template <class Visit> void forEach(unsigned longest, const Visit& visit) const {
        for (unsigned length = 1; length <= longest; ++length) {
            for (uint32_t code = first_[length]; code < behind_[length]; ++code) {
                visit(code, length, symbols_[offset_[length] + code - first_[length]]);
            }
        }
    }

private:
    bool isValid_ = false;
    std::array<uint32_t, 17> first_{};  // the first code of each length
    std::array<uint32_t, 17> behind_{}; // one past the last
    std::array<uint32_t, 17> offset_{}; // of its symbol
    std::array<uint8_t, 256> symbols_{};
};

// The codes of the differences between the means of neighbouring blocks.
class DifferenceCodes {
public:
    explicit DifferenceCodes(const JHUFF_TBL& table);

    bool isValid() const { return isValid_; }

    // Reads the next difference. Absent when the data is damaged.
    std::optional<int32_t> read(JpegBits::Cursor& cursor) const {
        cursor.refill();
        JpegCode::Found found = quick_[cursor.peek(quickBits)];
        if (found.length == 0) found = code_.find(cursor.peek(16));
        if (found.length == 0) return std::nullopt;
        const unsigned length = found.length;
        const unsigned size = found.symbol;
        const auto value = int32_t(cursor.window << length >> 1 >> (63 - size));
        cursor.take(length + size);
        // The lower half of the values are the negative ones. No branch, since nothing could predict it.
        const int32_t isLower = (value - (1 << size >> 1)) >> 31;
        return value + (isLower & (1 - (1 << size)));
    }

private:
    static constexpr unsigned quickBits = 9;
    static constexpr unsigned largestSize = 15;

    JpegCode code_;
    std::array<JpegCode::Found, 1U << quickBits> quick_{};
    bool isValid_;
};

// The codes of a block's details. There are up to 63 details, most of them zero. A code says how many zeros
// come before the next detail that is not, and how many bits behind the code are that detail's value.
class DetailCodes {
public:
    explicit DetailCodes(const JHUFF_TBL& table);

    bool isValid() const { return code_.isValid(); }

    // Steps over the details of a block. False when the data is damaged.
    bool skip(JpegBits::Cursor& cursor) const {
        unsigned position = 1;
        while (true) {
            const Step step = skipQuickly(cursor, position);
            if (isEnd(position)) return true;
            // The step leads too far: it takes bits of the next block for details, or no step is known.
            position -= step.details;
            cursor.giveBack(step.bits);
            if (!skipOne(cursor, position)) return false;
            if (isEnd(position)) return true;
        }
    }

private:
    // A move forward over one code with its value, or several.
    struct Step {
        uint8_t bits = 0;
        uint8_t details = 0; // plus `endOfBlock` if all that follow are zero
    };

    // As many steps as fit are found by one look at the next bits. Three looks must not take more bits than
    // one refill makes available.
    static constexpr unsigned quickBits = 13;
    static constexpr unsigned mostBits = 56 / 3;

    static constexpr unsigned blockSize = 64;
    static constexpr unsigned endOfBlock = 128;
    static constexpr Step unknown{.bits = 0, .details = 255};

    using Steps = std::array<Step, 1U << quickBits>;

    static Step stepFor(unsigned length, uint8_t symbol);
    Step combined(uint32_t bits, const std::array<uint8_t, 1U << quickBits>& lengths) const;

    static bool isEnd(unsigned position) {
        return position == blockSize || (position > endOfBlock && position < endOfBlock + blockSize);
    }

    // Goes on to the end of the block or beyond. Returns the last step.
    Step skipQuickly(JpegBits::Cursor& cursor, unsigned& position) const {
        while (true) {
            cursor.refill();
            for (int i = 0; i < 3; ++i) {
                const Step step = steps_[cursor.peek(quickBits)];
                cursor.take(step.bits);
                position += step.details;
                if (position >= blockSize) return step;
            }
        }
    }

    bool skipOne(JpegBits::Cursor& cursor, unsigned& position) const;

    JpegCode code_;
    Steps steps_{};  // of several codes where possible; `unknown` where there is none
    Steps single_{}; // of one code; no bits where there is none
};

} // namespace loftmere
