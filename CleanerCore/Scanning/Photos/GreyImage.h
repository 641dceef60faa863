#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace loftmere {

// A small picture in grey: one byte per pixel, row after row from the top, 0 for black.
struct GreyImage {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> pixels;

    GreyImage() = default;
    GreyImage(int columns, int rows) : width(columns), height(rows), pixels(size_t(columns) * size_t(rows)) {}

    uint8_t& at(int x, int y) { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    uint8_t at(int x, int y) const { return pixels[size_t(y) * size_t(width) + size_t(x)]; }
    const uint8_t* row(int y) const { return pixels.data() + size_t(y) * size_t(width); }

    bool operator==(const GreyImage&) const = default;
};

// The two functions below turn a row of pixels into one grey byte each. `grey` may be the row itself.

// Pixels of `bands` bytes: grey, grey and alpha, colour, or colour and alpha. Transparent parts show black.
void colorsToGrey(const uint8_t* row, size_t width, size_t bands, uint8_t* grey);

// Pixels of cyan, magenta, yellow and black ink. `inverted` means that 255 stands for no ink.
void inksToGrey(const uint8_t* row, size_t width, bool inverted, uint8_t* grey);

// How to turn a picture so that it is upright, as cameras write it: 1 to 8, where 1 is upright.
inline constexpr int uprightOrientation = 1;
inline constexpr int lastOrientation = 8;

// The picture as it is meant to be seen. An orientation out of range changes nothing.
GreyImage turnedUpright(const GreyImage& image, int orientation);

// Resizes a grey picture that comes row by row. Each pixel of the result is the mean of the area it covers,
// rounded once, so a mirrored picture gives the mirrored result. Holds one row of sums and the result,
// however large the source is.
class AreaReducer {
public:
    // All sizes are at least 1. The source may also be the smaller one.
    AreaReducer(int sourceWidth, int sourceHeight, int width, int height);

    // For a picture that must fit into a square of `side` pixels. It is never enlarged.
    static AreaReducer fitting(int sourceWidth, int sourceHeight, int side);

    // The next row from the top, `sourceWidth` bytes.
    void addRow(const uint8_t* row);

    // The result, once every row has been added.
    const GreyImage& result() const { return result_; }

private:
    // The part of the source below one column of the result: whole pixels between two partial ones. A length
    // is in parts of a pixel, and a source pixel has `width` of them.
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
    std::vector<uint64_t> columnSums_; // of the row just added
    std::vector<uint64_t> areaSums_;   // of the row of the result that is being filled
    int64_t position_ = 0;             // in the source, in parts of a row; a row has `height` of them
    int row_ = 0;                      // of the result
};

} // namespace loftmere
