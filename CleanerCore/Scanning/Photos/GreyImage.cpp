#include "CleanerCore/Scanning/Photos/GreyImage.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace loftmere {

namespace {

// The brightness of a colour, weighted as in video and JPEG.
constexpr uint8_t luma(unsigned red, unsigned green, unsigned blue) {
    return uint8_t((red * 77 + green * 150 + blue * 29 + 128) >> 8);
}

constexpr uint8_t product(unsigned a, unsigned b) {
    return uint8_t((a * b + 127) / 255);
}

// Where a pixel of the upright picture comes from. The axes are exchanged first, then each is reversed or
// not.
struct Turn {
    bool exchanged;
    bool columnsBackwards;
    bool rowsBackwards;
};

constexpr std::array<Turn, lastOrientation> turns{{
    {false, false, false}, // 1
    {false, true, false},  // 2: mirrored
    {false, true, true},   // 3: upside down
    {false, false, true},  // 4: mirrored and upside down
    {true, false, false},  // 5: mirrored along the diagonal
    {true, false, true},   // 6: needs a turn to the right
    {true, true, true},    // 7: mirrored along the other diagonal
    {true, true, false},   // 8: needs a turn to the left
}};

} // namespace

void colorsToGrey(const uint8_t* row, size_t width, size_t bands, uint8_t* grey) {
    const bool isColor = bands >= 3;
    const size_t alpha = isColor ? 3 : 1;
    for (size_t x = 0; x < width; ++x) {
        const uint8_t* pixel = row + x * bands;
        const uint8_t brightness = isColor ? luma(pixel[0], pixel[1], pixel[2]) : pixel[0];
        grey[x] = bands > alpha ? product(brightness, pixel[alpha]) : brightness;
    }
}

void inksToGrey(const uint8_t* row, size_t width, bool inverted, uint8_t* grey) {
    const unsigned flip = inverted ? 0 : 255;
    for (size_t x = 0; x < width; ++x) {
        const uint8_t* pixel = row + x * 4;
        grey[x] = product(luma(pixel[0] ^ flip, pixel[1] ^ flip, pixel[2] ^ flip), pixel[3] ^ flip);
    }
}

GreyImage turnedUpright(const GreyImage& image, int orientation) {
    if (orientation <= uprightOrientation || orientation > lastOrientation) return image;
    const Turn turn = turns[size_t(orientation - 1)];
    GreyImage upright =
        turn.exchanged ? GreyImage(image.height, image.width) : GreyImage(image.width, image.height);
    for (int y = 0; y < upright.height; ++y) {
        for (int x = 0; x < upright.width; ++x) {
            int column = turn.exchanged ? y : x;
            int row = turn.exchanged ? x : y;
            if (turn.columnsBackwards) column = image.width - 1 - column;
            if (turn.rowsBackwards) row = image.height - 1 - row;
            upright.at(x, y) = image.at(column, row);
        }
    }
    return upright;
}

AreaReducer::AreaReducer(int sourceWidth, int sourceHeight, int width, int height)
    : sourceWidth_(sourceWidth),
      sourceHeight_(sourceHeight),
      result_(width, height),
      spans_(size_t(width)),
      columnSums_(size_t(width)),
      areaSums_(size_t(width)) {
    for (int64_t column = 0; column < width; ++column) {
        const int64_t begin = column * sourceWidth;
        const int64_t end = begin + sourceWidth;
        Span& span = spans_[size_t(column)];
        span.first = int(begin / width);
        span.last = int((end - 1) / width);
        span.firstLength = uint64_t(std::min(end, (span.first + int64_t{1}) * width) - begin);
        if (span.last > span.first) span.lastLength = uint64_t(end - span.last * int64_t{width});
    }
}

AreaReducer AreaReducer::fitting(int sourceWidth, int sourceHeight, int side) {
    const int64_t longer = std::max(sourceWidth, sourceHeight);
    if (longer <= side) return {sourceWidth, sourceHeight, sourceWidth, sourceHeight};
    const auto reduced = [&](int length) {
        return int(std::max<int64_t>(1, (int64_t{length} * side * 2 + longer) / (longer * 2)));
    };
    return {sourceWidth, sourceHeight, reduced(sourceWidth), reduced(sourceHeight)};
}

void AreaReducer::sumColumns(const uint8_t* row) {
    const auto whole = uint64_t(result_.width);
    for (size_t column = 0; column < spans_.size(); ++column) {
        const Span& span = spans_[column];
        uint64_t sum = row[span.first] * span.firstLength;
        if (span.last > span.first) {
            const uint64_t between = std::accumulate(row + span.first + 1, row + span.last, uint64_t{0});
            sum += between * whole + row[span.last] * span.lastLength;
        }
        columnSums_[column] = sum;
    }
}

void AreaReducer::addRow(const uint8_t* row) {
    sumColumns(row);
    const int64_t end = position_ + result_.height;
    while (position_ < end && row_ < result_.height) {
        const int64_t rowEnd = (row_ + int64_t{1}) * sourceHeight_;
        const auto length = uint64_t(std::min(end, rowEnd) - position_);
        for (size_t column = 0; column < areaSums_.size(); ++column) {
            areaSums_[column] += columnSums_[column] * length;
        }
        position_ += int64_t(length);
        if (position_ == rowEnd) finishRow();
    }
}

void AreaReducer::finishRow() {
    const uint64_t area = uint64_t(sourceWidth_) * uint64_t(sourceHeight_);
    for (int column = 0; column < result_.width; ++column) {
        result_.at(column, row_) = uint8_t((areaSums_[size_t(column)] * 2 + area) / (area * 2));
    }
    std::ranges::fill(areaSums_, 0);
    ++row_;
}

} // namespace loftmere
