#pragma once

#include "CleanerCore/Scanning/Photos/JpegInput.h"

#include <array>
#include <cstdint>
#include <optional>

namespace loftmere {

// The bits of a scan's compressed data. Stops at a marker; bits wanted beyond it are told as missing.
class JpegBits {
public:
    explicit JpegBits(JpegInput& input) : input_(input) {}

    // The next 16 bits without taking them, zeros beyond the end of the data.
    uint32_t peek16();

    // Takes bits that were seen; at most 16. False when there were not so many.
    bool take(int count);

    // Passes over the marker that stands between two stretches of data. False when another one stands there.
    bool restart();

private:
    void fill();

    JpegInput& input_;
    uint64_t bits_ = 0; // the lowest `count_` of them
    int count_ = 0;
    int marker_ = 0;
    bool atEnd_ = false;
};

// The codes of the differences between the mean values of neighbouring blocks.
class JpegHuffmanTable {
public:
    explicit JpegHuffmanTable(const JHUFF_TBL& codes);

    // Whether the code lengths make a code.
    bool isValid() const { return isValid_; }

    // The next difference; absent when the data is damaged or at its end.
    std::optional<int32_t> readDifference(JpegBits& bits) const;

private:
    struct Code {
        uint8_t length = 0; // 0: longer than the quick table goes, or no code
        uint8_t symbol = 0;
    };
    static constexpr int quickBits = 9;

    Code find(uint32_t next16) const;

    bool isValid_ = false;
    std::array<Code, 1U << quickBits> quick_{};
    std::array<uint32_t, 17> first_{};  // the first code of each length
    std::array<uint32_t, 17> behind_{}; // one behind the last
    std::array<uint32_t, 17> offset_{}; // of its symbol
    std::array<uint8_t, 256> symbols_{};
};

} // namespace loftmere
