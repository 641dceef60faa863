#pragma once

#include <cstdint>
#include <limits>

namespace loftmere {

// Adds a byte count to a sum that stops at the largest count there is: a sparse file may claim nearly all of
// it, and two of them more.
inline void addBytes(int64_t& sum, int64_t bytes) {
    if (__builtin_add_overflow(sum, bytes, &sum)) sum = std::numeric_limits<int64_t>::max();
}

} // namespace loftmere
