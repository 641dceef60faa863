#pragma once

#include <string>

namespace loftmere::test {

// A file system that is mounted for as long as this object lives, where root can do that.
class Mounted {
public:
    // `what` as the mount tool of Linux takes it, "-t tmpfs none" for memory.
    Mounted(const std::string& what, std::string at);
    ~Mounted();
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    const std::string path;
    const bool done;
};

} // namespace loftmere::test
