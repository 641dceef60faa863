#include "CleanerCore/Scanning/Throttle.h"

namespace loftmere {

bool Throttle::allow() {
    const std::lock_guard guard(lock_);
    const Date now = currentDate();
    // A clock set back must not silence the scan until it has caught up.
    if (now >= last_ && secondsBetween(last_, now) < interval_) return false;
    last_ = now;
    return true;
}

} // namespace loftmere
