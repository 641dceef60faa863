#pragma once

#include <cstddef>
#include <string_view>

// What a property list may ask of its reader. The library that reads them recurses as deep as they nest and
// unfolds whatever a binary one refers to more than once, so a small hostile file could take the stack or all
// memory. These are asked first.
namespace loftmere::PropertyListLimits {

inline constexpr size_t bytes = size_t{64} << 20; // a backup's holds a picture of every app
inline constexpr int depth = 100;
inline constexpr size_t unfoldedBytes = size_t{96} << 20;

bool isBinary(std::string_view text);

// The object table is whole, has no cycle and stays within the limits.
bool allowsBinary(std::string_view text);

// The arrays and dictionaries are not nested too deep, and the values not too many. `text` is UTF-8.
bool allowsXML(std::string_view text);

} // namespace loftmere::PropertyListLimits
