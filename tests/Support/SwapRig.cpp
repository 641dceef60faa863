#include "tests/Support/SwapRig.h"

#include <fcntl.h>

#include <cstdio>
#include <cstdlib>

namespace loftmere::test {

namespace {

bool exchange(const char* one, const char* other) {
#ifdef __APPLE__
    return ::renamex_np(one, other, RENAME_SWAP) == 0;
#else
    return ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0;
#endif
}

} // namespace

SwapRig::SwapRig(std::string one, std::string other)
    : thread_([this, one = std::move(one), other = std::move(other)] {
          while (!isOver_) {
              if (exchange(one.c_str(), other.c_str())) ++exchanges_;
          }
      }) {}

SwapRig::~SwapRig() {
    isOver_ = true;
    thread_.join();
}

int64_t wantedExchanges() {
    const char* asked = std::getenv("LOFTMERE_EXCHANGES"); // NOLINT(concurrency-mt-unsafe)
    return asked != nullptr ? std::atoll(asked) : 30000;
}

} // namespace loftmere::test
