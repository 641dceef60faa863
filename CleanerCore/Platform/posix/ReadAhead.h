#pragma once

#include <cstdint>

namespace loftmere {

// Starts to bring a part of an open file into memory, without waiting for it.
void readAhead(int fd, int64_t offset, int64_t length);

} // namespace loftmere
