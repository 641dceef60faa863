#include "CleanerCore/Support/Crew.h"

#include <algorithm>
#include <atomic>
#include <exception>

namespace loftmere {

namespace {

std::atomic<int> helpersAtWork = 0;

// The right to one of the process's helpers; given back by whoever ends up with it.
class Helper {
public:
    static std::optional<Helper> claim(int leaving) {
        int taken = helpersAtWork;
        do {
            if (Crew::limit - taken <= leaving) return std::nullopt;
        } while (!helpersAtWork.compare_exchange_weak(taken, taken + 1));
        return Helper();
    }

    ~Helper() {
        if (isHeld_) --helpersAtWork;
    }
    Helper(Helper&& other) noexcept : isHeld_(std::exchange(other.isHeld_, false)) {}
    Helper& operator=(Helper&&) = delete;

private:
    Helper() = default;

    bool isHeld_ = true;
};

} // namespace

bool Crew::call(int leaving) {
    auto helper = Helper::claim(leaving);
    if (!helper) return false;
    try {
        helpers_.emplace_back([this](const Helper&) { work_(); }, std::move(*helper));
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void Crew::wait() {
    for (std::thread& helper : helpers_) helper.join();
    helpers_.clear();
}

bool Crew::leaveTo(std::function<void()> job) {
    auto helper = Helper::claim(0);
    if (!helper) return false;
    try {
        std::thread([job = std::move(job)](const Helper&) { job(); }, std::move(*helper)).detach();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void concurrentPerform(size_t iterations, size_t threads, const std::function<void(size_t)>& body) {
    std::atomic<size_t> next = 0;
    Crew crew([&] {
        for (size_t i = next++; i < iterations; i = next++) body(i);
    });
    for (size_t i = next++; i < iterations; i = next++) {
        // At each turn, since helpers that were busy at first may be free by now.
        const size_t wanted = std::min(std::max<size_t>(threads, 1), iterations - i) - 1;
        while (crew.size() < wanted && crew.call()) {
        }
        body(i);
    }
}

void concurrentPerform(size_t iterations, const std::function<void(size_t)>& body) {
    concurrentPerform(iterations, std::max(1U, std::thread::hardware_concurrency()), body);
}

} // namespace loftmere
