#pragma once

#include <fcntl.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

namespace loftmere::test {

// A hostile neighbour: a thread that keeps exchanging what stands at two paths, as fast as it can, until it
// is destroyed.
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
    static bool exchange(const char* one, const char* other) {
#ifdef __APPLE__
        return ::renamex_np(one, other, RENAME_SWAP) == 0;
#else
        return ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0;
#endif
    }

    std::atomic<bool> isOver_ = false;
    std::atomic<int64_t> exchanges_ = 0;
    std::thread thread_;
};

} // namespace loftmere::test
