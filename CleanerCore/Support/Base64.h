#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// Standard Base64 with padding, without line breaks.
std::string base64Encoded(std::string_view bytes);

} // namespace loftmere
