#include "tests/Support/Mounted.h"

#include <sys/mount.h>

#include <cstdlib>

namespace loftmere::test {

Mounted::Mounted(const std::string& what, std::string at)
    : path(std::move(at)),
      done(std::system(("mount " + what + " '" + path + "' 2>/dev/null").c_str()) == 0) {}

Mounted::~Mounted() {
    if (done) ::umount2(path.c_str(), MNT_DETACH);
}

} // namespace loftmere::test
