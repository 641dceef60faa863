#include "LoftmereApp/Model/MainThread.h"

#include <algorithm>

namespace loftmere {

namespace {

// The longest sleep. A clock that is moved by hand wakes nobody up.
constexpr std::chrono::milliseconds longestWait{1000};

} // namespace

RunLoop::RunLoop(Clock clock) : clock_(std::move(clock)) {}

void RunLoop::post(std::function<void()> task) {
    const std::lock_guard guard(lock_);
    ready_.push_back(std::move(task));
    changed_.notify_one();
}

void RunLoop::after(double seconds, std::function<void()> task) {
    const auto wait = std::chrono::duration_cast<Moment::duration>(std::chrono::duration<double>(seconds));
    const Moment due = clock_() + wait;
    const std::lock_guard guard(lock_);
    timers_.emplace(due, std::move(task));
    changed_.notify_one();
}

bool RunLoop::isCurrent() const {
    return std::this_thread::get_id() == thread_;
}

void RunLoop::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        if (const auto task = takeReady())
            task();
        else
            waitForTask();
    }
}

void RunLoop::runReady() {
    while (const auto task = takeReady()) task();
}

std::function<void()> RunLoop::takeReady() {
    const Moment now = clock_();
    const std::lock_guard guard(lock_);
    while (!timers_.empty() && timers_.begin()->first <= now) {
        ready_.push_back(std::move(timers_.begin()->second));
        timers_.erase(timers_.begin());
    }
    if (ready_.empty()) return nullptr;
    auto task = std::move(ready_.front());
    ready_.pop_front();
    return task;
}

void RunLoop::waitForTask() {
    const Moment now = clock_();
    std::unique_lock guard(lock_);
    if (!ready_.empty()) return;
    Moment::duration wait = longestWait;
    if (!timers_.empty()) wait = std::min(wait, timers_.begin()->first - now);
    changed_.wait_for(guard, wait);
}

} // namespace loftmere
