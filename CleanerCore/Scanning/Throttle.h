#pragma once

#include "CleanerCore/Support/Date.h"

#include <mutex>

namespace loftmere {

// Lets a call through at most once in `interval` seconds. Any thread.
class Throttle {
public:
    explicit Throttle(double interval) : interval_(interval) {}

    bool allow();

private:
    double interval_;
    std::mutex lock_;
    Date last_ = distantPast;
};

} // namespace loftmere
