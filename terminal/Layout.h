#pragma once

#include <string>
#include <string_view>
#include <vector>

// Text put into columns. All text must be printable; widths are columns of the terminal.
namespace loftmere {

// Blanks added on the right, or on the left, up to the width.
std::string padded(std::string_view text, int columns);
std::string padLeft(std::string_view text, int columns);

// The text if it fits, else its beginning, or its end, with the ellipsis where it was cut.
std::string cutEnd(std::string_view text, int columns, std::string_view ellipsis);
std::string cutStart(std::string_view text, int columns, std::string_view ellipsis);

// The text as lines of at most that width, broken at blanks where there are any. At least one line.
std::vector<std::string> wrapped(std::string_view text, int columns);

} // namespace loftmere
