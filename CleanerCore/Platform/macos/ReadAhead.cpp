#include "CleanerCore/Platform/posix/ReadAhead.h"

#include <fcntl.h>

#include <algorithm>
#include <limits>

namespace loftmere {

void readAhead(int fd, int64_t offset, int64_t length) {
    if (length <= 0) return;
    const int64_t most = std::numeric_limits<int>::max();
    radvisory wanted{.ra_offset = offset, .ra_count = static_cast<int>(std::min(length, most))};
    ::fcntl(fd, F_RDADVISE, &wanted);
}

} // namespace loftmere
