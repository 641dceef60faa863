#include "CleanerCore/Platform/posix/ReadAhead.h"

#include <fcntl.h>

namespace loftmere {

void readAhead(int fd, int64_t offset, int64_t length) {
    if (length <= 0) return; // the system takes 0 for all the rest
    ::posix_fadvise(fd, offset, length, POSIX_FADV_WILLNEED);
}

} // namespace loftmere
