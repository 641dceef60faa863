#include "CleanerCore/Platform/FileFlags.h"

#include <sys/stat.h>

namespace loftmere {

bool isMarkedHidden(const std::string& path) {
    struct stat raw{};
    return ::lstat(path.c_str(), &raw) == 0 && (raw.st_flags & UF_HIDDEN) != 0;
}

bool isCloudPlaceholder(int fd) {
    struct stat raw{};
    return ::fstat(fd, &raw) == 0 && (raw.st_flags & SF_DATALESS) != 0;
}

} // namespace loftmere
