#include "CleanerCore/Platform/FileFlags.h"

#include <sys/stat.h>

namespace loftmere {

bool isMarkedHidden(const std::string& path) {
    struct stat raw{};
    return ::lstat(path.c_str(), &raw) == 0 && (raw.st_flags & UF_HIDDEN) != 0;
}

} // namespace loftmere
