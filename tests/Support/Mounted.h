#pragma once

#include <sys/mount.h>

#include <cstdlib>
#include <string>

namespace loftmere::test {

// A file system that is mounted for as long as this object lives, where root can do that.
class Mounted {
public:
    // `what` as the system's mount tool takes it, "-t tmpfs none" for memory.
    Mounted(const std::string& what, std::string at)
        : path(std::move(at)),
          done(std::system(("mount " + what + " '" + path + "' 2>/dev/null").c_str()) == 0) {}
    ~Mounted() {
        if (done) ::umount2(path.c_str(), MNT_DETACH);
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    const std::string path;
    const bool done;
};

} // namespace loftmere::test
