#pragma once

#include <cstdint>
#include <string>

namespace loftmere::ByteFormat {

// A byte count as every screen shows it, in decimal units and English: "Zero KB", "1 byte", "999 bytes",
// "12 KB", "1.5 MB", "1.25 GB". KB has no decimals, MB at most one, GB and above at most two.
std::string string(int64_t bytes);

} // namespace loftmere::ByteFormat
