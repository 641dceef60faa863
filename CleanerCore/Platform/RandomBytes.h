#pragma once

#include <cstddef>
#include <string>

namespace loftmere {

// Bytes from the system's own random source, fit for secrets; at most 256 at a time. Ends the program where the
// system has none to give, since no secret is better than a guessable one. Any thread.
std::string randomBytes(size_t count);

} // namespace loftmere
