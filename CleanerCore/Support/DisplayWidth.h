#pragma once

#include <string_view>

// How much room text takes on a terminal: two columns for wide characters (Chinese, Japanese, Korean, emoji),
// none for combining marks, one for the rest. Text must be printable. What a terminal glues together counts
// in full, so the answer is never too small.
namespace loftmere {

int displayWidth(std::string_view text);

// The longest beginning, and the longest end, of the text that take at most `columns`.
std::string_view prefixOfWidth(std::string_view text, int columns);
std::string_view suffixOfWidth(std::string_view text, int columns);

} // namespace loftmere
