#include "CleanerCore/Scanning/Photos/DecodingTurn.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace loftmere {

namespace {

// Not a mutex: who waits must feel a cancel, and an abandoned decoding may still run when the program ends
// and its objects are destroyed.
std::atomic<bool> isTaken = false;

} // namespace

DecodingTurn::~DecodingTurn() {
    if (isHeld_) isTaken = false;
}

bool DecodingTurn::take(const FS::CancelCheck& isCancelled) {
    while (!isHeld_ && isTaken.exchange(true)) {
        if (isCancelled && isCancelled()) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    isHeld_ = true;
    return true;
}

} // namespace loftmere
