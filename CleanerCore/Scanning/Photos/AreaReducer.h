#pragma once

#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <cstdint>
#include <vector>

namespace loftmere {

// Brings a grey picture that comes row by row to another size: each pixel of the result is the mean of the
// area it covers, exact but for one rounding, so that a mirrored picture gives the mirrored result. Holds one
// row of sums and the result, whatever the size of the source.
class AreaReducer {
public:
    // All sizes are at least 1. The source may also be the smaller one.
    AreaReducer(int sourceWidth, int sourceHeight, int width, int height);

    // For a picture that is to fit into a square of `side` pixels, never enlarged.
    static AreaReducer fitting(int sourceWidth, int sourceHeight, int side);

    // The next row from the top, `sourceWidth` bytes.
    void addRow(const uint8_t* row);

    // The result, once every row has been added.
    const GreyImage& result() const { return result_; }

private:
    // What of the source lies below one column of the result: whole pixels between two partial ones. Lengths
    // are counted in parts of a pixel, `width` of them to a source pixel.
    struct Span {
        int first = 0;
        int last = 0;
        uint64_t firstLength = 0;
        uint64_t lastLength = 0; // 0 where the span ends in its first pixel
    };

    void sumColumns(const uint8_t* row);
    void finishRow();

    int sourceWidth_;
    int sourceHeight_;
    GreyImage result_;
    std::vector<Span> spans_;
    std::vector<uint64_t> columnSums_; // of the row in hand
    std::vector<uint64_t> areaSums_;   // of the row of the result that is being filled
    int64_t position_ = 0; // how far the source has come, in parts of a row, `height` of them to a row
    int row_ = 0;          // of the result
};

} // namespace loftmere
