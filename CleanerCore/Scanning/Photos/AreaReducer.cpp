#include "CleanerCore/Scanning/Photos/AreaReducer.h"

#include <algorithm>
#include <numeric>

namespace loftmere {

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
