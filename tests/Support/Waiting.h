#pragma once

#include <chrono>
#include <thread>

namespace loftmere::test {

// Waits, for ten seconds at most, until another process or thread has made a condition true.
bool comesTrue(const auto& condition) {
    for (int i = 0; i < 1000 && !condition(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

} // namespace loftmere::test
