#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

// Work shared among threads. The whole process has a fixed number of helper threads for it, so a piece of
// work may get fewer than it could use, or none at all. That is no failure: whoever wants help does the work
// too, and never waits for a helper to become free.
namespace loftmere {

// The helpers of one piece of work. One thread at a time may use the object.
class Crew {
public:
    // How many helpers the process has at one time.
    static constexpr int limit = 40;

    // `work` is what every helper runs once, at the same time as the others. It returns when it finds nothing
    // left to do, and must not throw.
    explicit Crew(std::function<void()> work) : work_(std::move(work)) {}

    // Waits for the helpers.
    ~Crew() { wait(); }
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;

    // Starts one more helper. False when no more than `leaving` of them are free, or when the system has no
    // thread to give. Trying again costs next to nothing.
    bool call(int leaving = 0);

    // How many have been called.
    size_t size() const { return helpers_.size(); }

    // Returns when every helper has returned.
    void wait();

    // Runs `job` on a helper that nobody waits for, so it must own all it uses. False when there is none; the
    // job has not run then.
    static bool leaveTo(std::function<void()> job);

private:
    std::function<void()> work_;
    std::vector<std::thread> helpers_;
};

// Runs `body(0)` to `body(iterations - 1)` on up to `threads` threads, the calling thread among them, and
// returns when all have ended. Iterations start in order. `body` must not throw. Any thread.
void concurrentPerform(size_t iterations, size_t threads, const std::function<void(size_t)>& body);

// The same on as many threads as there are processor cores.
void concurrentPerform(size_t iterations, const std::function<void(size_t)>& body);

// Leaves work that cannot be interrupted, such as a library's call of a second or two, to a helper, so that a
// cancel is felt at once. `isCancelled` is asked on the calling thread every few milliseconds; once it
// answers true the result is absent and the work ends by itself, so it must own all it uses. The work gets a
// check of its own that says when nobody waits any more. With no helper free the calling thread does the
// work. Neither function may throw. Any thread.
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
    if (!Crew::leaveTo(run)) run();
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
