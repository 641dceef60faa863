#pragma once

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>

namespace loftmere::test {

// Exchanges what is at two paths in one step. The systems have no call for this in common.
bool exchange(const char* one, const char* other);

// A hostile neighbour: a thread that keeps exchanging what is at two paths, as fast as it can, until it is
// destroyed.
class SwapRig {
public:
    SwapRig(std::string one, std::string other)
        : thread_([this, one = std::move(one), other = std::move(other)] {
              while (!isOver_) {
                  if (exchange(one.c_str(), other.c_str())) ++exchanges_;
              }
          }) {}
    ~SwapRig() {
        isOver_ = true;
        thread_.join();
    }
    SwapRig(const SwapRig&) = delete;
    SwapRig& operator=(const SwapRig&) = delete;

    int64_t exchanges() const { return exchanges_; }

private:
    std::atomic<bool> isOver_ = false;
    std::atomic<int64_t> exchanges_ = 0;
    std::thread thread_;
};

} // namespace loftmere::test
