#include "CleanerCore/Scanning/Photos/DifferenceHash.h"

#include "CleanerCore/Scanning/Photos/AreaReducer.h"

namespace loftmere {

namespace {

constexpr int hashColumns = 9;
constexpr int hashRows = 8;

} // namespace

uint64_t differenceHash(const GreyImage& image) {
    AreaReducer reducer(image.width, image.height, hashColumns, hashRows);
    for (int y = 0; y < image.height; ++y) reducer.addRow(image.row(y));
    const GreyImage& tiny = reducer.result();
    uint64_t hash = 0;
    for (int y = 0; y < hashRows; ++y) {
        for (int x = 0; x + 1 < hashColumns; ++x)
            hash = hash << 1 | uint64_t(tiny.at(x, y) > tiny.at(x + 1, y));
    }
    return hash;
}

} // namespace loftmere
