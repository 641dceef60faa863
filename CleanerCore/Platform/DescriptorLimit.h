#pragma once

#include <cstddef>

namespace loftmere {

// How many files this process may have open at once. Any thread.
size_t descriptorLimit();

// Raises it to what a scan of everything at once is at ease with, as far as the system lets it be raised; a
// system's default may be 256. For a program's start: children inherit it.
void raiseDescriptorLimit();

} // namespace loftmere
