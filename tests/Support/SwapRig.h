#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace loftmere::test {

// A hostile neighbour: a thread that keeps exchanging what stands at two paths, as fast as it can, until it
// is destroyed.
class SwapRig {
public:
    SwapRig(std::string one, std::string other);
    ~SwapRig();
    SwapRig(const SwapRig&) = delete;
    SwapRig& operator=(const SwapRig&) = delete;

    int64_t exchanges() const { return exchanges_; }

private:
    std::atomic<bool> isOver_ = false;
    std::atomic<int64_t> exchanges_ = 0;
    std::thread thread_;
};

// How many exchanges a test goes through: LOFTMERE_EXCHANGES, else a number that takes seconds.
int64_t wantedExchanges();

} // namespace loftmere::test
