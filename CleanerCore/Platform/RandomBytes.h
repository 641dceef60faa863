#pragma once

#include <cstddef>
#include <string>

namespace loftmere {

// Bytes from the system's own random source, fit for secrets; at most 256 at a time. Ends the program where
// the system has none to give, since no secret is better than a guessable one. Any thread.
std::string randomBytes(size_t count);

// A new random UUID in upper-case text, such as "7F3A9C10-0B2E-4C5D-9E8F-0123456789AB". Any thread.
std::string newUUID();

} // namespace loftmere
