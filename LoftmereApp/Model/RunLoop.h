#pragma once

#include "LoftmereApp/Model/MainThread.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

namespace loftmere {

// A main thread without a toolkit: the thread that made the loop, while it runs one of the two operations
// below.
class RunLoop final : public MainThread {
public:
    using Moment = std::chrono::steady_clock::time_point;
    using Clock = std::function<Moment()>;

    // `clock` decides when a task of `after` is due; a test gives one that it moves by hand.
    explicit RunLoop(Clock clock = std::chrono::steady_clock::now);

    void post(std::function<void()> task) override;
    void after(double seconds, std::function<void()> task) override;
    bool isCurrent() const override;

    // Runs tasks as they come until `done`, asked before each task, answers true. Main thread only.
    void runUntil(const std::function<bool()>& done);

    // Runs all tasks that are ready, those they post among them, and waits for nothing. Main thread only.
    void runReady();

private:
    std::function<void()> takeReady();
    void waitForTask();

    const Clock clock_;
    const std::thread::id thread_ = std::this_thread::get_id();
    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> ready_;
    std::multimap<Moment, std::function<void()>> timers_;
};

} // namespace loftmere
