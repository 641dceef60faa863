#include "CleanerCore/Platform/posix/NoAccessDate.h"

#include <fcntl.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace loftmere {

FileDescriptor openQuietly(int at, const char* path, int flags) {
    for (int attempt = 1;; ++attempt) {
        FileDescriptor opened = tryToOpenQuietly(at, path, flags);
        if (opened || (errno != EMFILE && errno != ENFILE) || attempt == 200) return opened;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

FileDescriptor openQuietly(const std::string& path, int flags) {
    if (path.find('\0') == std::string::npos) return openQuietly(AT_FDCWD, path.c_str(), flags);
    errno = ENOENT;
    return FileDescriptor();
}

} // namespace loftmere
