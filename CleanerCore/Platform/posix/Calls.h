#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>

// Every system call of the platform layer that opens or changes something goes through here, so that tests
// can make the n-th one fail or end the process there. The product never sets the hook; it costs one relaxed
// load.
namespace loftmere::calls {

enum class Call { open, makeFolder, rename, unlink, write, sync, changeMode, truncate };

// Asked before each call, on the thread that makes it. 0 lets the call through; an errno value makes it fail
// with that value.
using Hook = int (*)(Call);
inline std::atomic<Hook> hook{nullptr};

// Whether the call may be made. Sets errno when not.
inline bool permitted(Call call) {
    const Hook ask = hook.load(std::memory_order_relaxed);
    if (ask == nullptr) [[likely]]
        return true;
    const int error = ask(call);
    if (error != 0) errno = error;
    return error == 0;
}

// The calls themselves, with their own arguments and results.

inline int open(int at, const char* path, int flags, mode_t mode = 0) {
    return permitted(Call::open) ? ::openat(at, path, flags | O_CLOEXEC, mode) : -1;
}

inline int makeFolder(int at, const char* path, mode_t mode) {
    return permitted(Call::makeFolder) ? ::mkdirat(at, path, mode) : -1;
}

inline int rename(int fromAt, const char* from, int toAt, const char* to) {
    return permitted(Call::rename) ? ::renameat(fromAt, from, toAt, to) : -1;
}

inline int unlink(int at, const char* path, int flags) {
    return permitted(Call::unlink) ? ::unlinkat(at, path, flags) : -1;
}

inline ssize_t write(int fd, const void* data, size_t size) {
    return permitted(Call::write) ? ::write(fd, data, size) : -1;
}

inline int changeMode(int fd, mode_t mode) {
    return permitted(Call::changeMode) ? ::fchmod(fd, mode) : -1;
}

// For the item itself; a link is not followed.
inline int changeModeAt(int at, const char* path, mode_t mode) {
    return permitted(Call::changeMode) ? ::fchmodat(at, path, mode, AT_SYMLINK_NOFOLLOW) : -1;
}

inline int truncate(int fd, off_t size) {
    return permitted(Call::truncate) ? ::ftruncate(fd, size) : -1;
}

} // namespace loftmere::calls
