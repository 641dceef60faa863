#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace loftmere {

// A small picture in grey: one byte a pixel, row after row from the top, 0 black.
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

} // namespace loftmere
