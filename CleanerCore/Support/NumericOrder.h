#pragma once

#include <compare>
#include <string_view>

namespace loftmere {

// Compares two texts, runs of decimal digits by their value and everything else by character, so that "9.3"
// is less than "17.2". Leading zeros do not count: "017" and "17" are equal.
std::weak_ordering compareNumerically(std::string_view a, std::string_view b);

} // namespace loftmere
