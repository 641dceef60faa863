#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace loftmere {

// Does work that cannot be interrupted, such as a library's call of a second or two, on a thread of its own,
// so that a cancel is felt at once. `isCancelled` is asked on the calling thread every few milliseconds; when
// it answers true the answer is absent and the work is left to end by itself, so it must own all that it
// uses. The work is given a check of its own that tells when nobody waits any more. Must not throw.
template <class T>
std::optional<T>
unlessCancelled(const std::function<bool()>& isCancelled,
                std::function<std::optional<T>(const std::function<bool()>& isAbandoned)> work) {
    struct Shared {
        std::mutex lock;
        std::condition_variable changed;
        std::optional<std::optional<T>> answer;
        std::atomic<bool> isAbandoned = false;
    };
    const auto shared = std::make_shared<Shared>();
    const auto run = [shared, work = std::move(work)] {
        auto answer = work([&] { return shared->isAbandoned.load(); });
        const std::lock_guard guard(shared->lock);
        shared->answer = std::move(answer);
        shared->changed.notify_one();
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error&) {
        run(); // no further thread can be had
    }
    std::unique_lock guard(shared->lock);
    const auto hasEnded = [&] { return shared->answer.has_value(); };
    while (!shared->changed.wait_for(guard, std::chrono::milliseconds(10), hasEnded)) {
        if (!isCancelled || !isCancelled()) continue;
        shared->isAbandoned = true;
        return std::nullopt;
    }
    return std::move(*shared->answer);
}

} // namespace loftmere
