#pragma once

#include <compare>
#include <string>
#include <string_view>

// When two texts are the same, and which comes first.
namespace loftmere {

// One spelling for all that Unicode calls canonically equivalent: two texts are equivalent when their
// composed forms are equal. Text that is not valid UTF-8 comes back unchanged.
std::string composedText(std::string_view text);

// The composed form without the difference between upper and lower case and without the characters that some
// volumes ignore. Two names that a volume may take for the same one have equal caseless forms.
std::string caselessText(std::string_view text);

bool isASCII(std::string_view text);

// Compares runs of decimal digits by value and everything else byte by byte, so that "9.3" is less than
// "17.2". Leading zeros do not count: "017" and "17" are equal.
std::weak_ordering compareNumerically(std::string_view a, std::string_view b);

} // namespace loftmere
