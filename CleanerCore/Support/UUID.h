#pragma once

#include <string>

namespace loftmere {

// A new random UUID in upper-case text, such as "7F3A9C10-0B2E-4C5D-9E8F-0123456789AB". Any thread.
std::string newUUID();

} // namespace loftmere
