#include "CleanerCore/Scanning/Photos/Luma.h"

namespace loftmere {

namespace {

constexpr uint8_t product(unsigned a, unsigned b) {
    return uint8_t((a * b + 127) / 255);
}

} // namespace

void colorsToGrey(const uint8_t* row, size_t width, size_t bands, uint8_t* grey) {
    const bool isColor = bands >= 3;
    const size_t cover = isColor ? 3 : 1;
    for (size_t x = 0; x < width; ++x) {
        const uint8_t* pixel = row + x * bands;
        const uint8_t brightness = isColor ? luma(pixel[0], pixel[1], pixel[2]) : pixel[0];
        grey[x] = bands > cover ? product(brightness, pixel[cover]) : brightness;
    }
}

void inksToGrey(const uint8_t* row, size_t width, bool inverted, uint8_t* grey) {
    const unsigned flip = inverted ? 0 : 255;
    for (size_t x = 0; x < width; ++x) {
        const uint8_t* pixel = row + x * 4;
        grey[x] = product(luma(pixel[0] ^ flip, pixel[1] ^ flip, pixel[2] ^ flip), pixel[3] ^ flip);
    }
}

} // namespace loftmere
