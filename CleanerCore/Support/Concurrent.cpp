#include "CleanerCore/Support/Concurrent.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace loftmere {

void concurrentPerform(size_t iterations, const std::function<void(size_t)>& body) {
    concurrentPerform(iterations, std::max(1U, std::thread::hardware_concurrency()), body);
}

void concurrentPerform(size_t iterations, size_t threads, const std::function<void(size_t)>& body) {
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i = next++; i < iterations; i = next++) body(i);
    };
    std::vector<std::thread> helpers;
    try {
        while (helpers.size() + 1 < std::min(iterations, threads)) helpers.emplace_back(work);
    } catch (const std::system_error&) {
        // No further thread can be had; those there are do the rest.
    }
    work();
    for (std::thread& helper : helpers) helper.join();
}

} // namespace loftmere
