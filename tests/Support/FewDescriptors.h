#pragma once

#include <sys/resource.h>

namespace loftmere::test {

// This process may have only so many files open for as long as this object lives.
class FewDescriptors {
public:
    explicit FewDescriptors(rlim_t limit) {
        ::getrlimit(RLIMIT_NOFILE, &usual_);
        const rlimit few{.rlim_cur = limit, .rlim_max = usual_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &usual_); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit usual_{};
};

} // namespace loftmere::test
