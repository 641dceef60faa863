#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace loftmere {

// The one thread that all fields of the model belong to, seen as a queue of tasks. Windows put their
// toolkit's event loop behind it; everything else uses a RunLoop.
class MainThread {
public:
    virtual ~MainThread() = default;

    // Runs the task on the main thread, soon and never before `post` has returned. Tasks run in the order in
    // which they were posted. Any thread.
    virtual void post(std::function<void()> task) = 0;

    // Runs the task on the main thread once `seconds` have passed. Any thread.
    virtual void after(double seconds, std::function<void()> task) = 0;

    // Whether the caller is on the main thread.
    virtual bool isCurrent() const = 0;
};

// A main thread without a toolkit: the thread that made the loop, while it is in `runUntil` or `runReady`.
class RunLoop final : public MainThread {
public:
    using Moment = std::chrono::steady_clock::time_point;
    using Clock = std::function<Moment()>;

    // `clock` decides when a task of `after` is due. A test passes one that it moves by hand.
    explicit RunLoop(Clock clock = std::chrono::steady_clock::now);

    void post(std::function<void()> task) override;
    void after(double seconds, std::function<void()> task) override;
    bool isCurrent() const override;

    // Runs tasks as they come until `done`, asked before each task, answers true. Main thread only.
    void runUntil(const std::function<bool()>& done);

    // Runs all tasks that are ready, including those they post, and waits for nothing. Main thread only.
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
