#pragma once

#include <cstddef>
#include <cstdint>

namespace loftmere {

// How bright a colour looks, as video and JPEG weigh it.
constexpr uint8_t luma(unsigned red, unsigned green, unsigned blue) {
    return uint8_t((red * 77 + green * 150 + blue * 29 + 128) >> 8);
}

// A row of pixels to one grey byte each. `grey` may be the row itself.

// Pixels of `bands` bytes: grey, grey and cover, colour, or colour and cover. What is transparent shows black
// behind.
void colorsToGrey(const uint8_t* row, size_t width, size_t bands, uint8_t* grey);

// Pixels of cyan, magenta, yellow and black ink; `inverted` when 255 stands for no ink.
void inksToGrey(const uint8_t* row, size_t width, bool inverted, uint8_t* grey);

} // namespace loftmere
