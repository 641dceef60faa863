#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// One spelling for all that Unicode calls canonically equivalent: two texts are equivalent when their
// composed forms are equal. What is not valid UTF-8 comes back unchanged.
std::string composedText(std::string_view text);

// The composed form without the difference of upper and lower case and without the characters that some
// volumes pass over. Two names that a volume may take for the same one have equal caseless forms.
std::string caselessText(std::string_view text);

bool isASCII(std::string_view text);

} // namespace loftmere
