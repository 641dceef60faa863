#pragma once

#include <cstddef>
#include <functional>

namespace loftmere {

// Runs `body(0)` to `body(iterations - 1)`, side by side on up to as many threads as there are processor
// cores, the calling thread among them, and returns when all have ended. Iterations start in order. Where no
// further thread can be had, fewer do the work. `body` must not throw.
void concurrentPerform(size_t iterations, const std::function<void(size_t)>& body);

// The same on at most `threads` threads.
void concurrentPerform(size_t iterations, size_t threads, const std::function<void(size_t)>& body);

} // namespace loftmere
