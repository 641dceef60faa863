#include "CleanerCore/Platform/DescriptorLimit.h"

#include <sys/resource.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr rlim_t enough = 4096;
constexpr size_t least = 20; // what the oldest systems grant

} // namespace

size_t descriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return least;
    return static_cast<size_t>(std::min(limit.rlim_cur, enough));
}

void raiseDescriptorLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= enough) return;
    limit.rlim_cur = std::min(limit.rlim_max, enough);
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace loftmere
