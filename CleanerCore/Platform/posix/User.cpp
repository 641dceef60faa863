#include "CleanerCore/Platform/User.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace loftmere {

std::string homeDirectory() {
    const char* home =
        std::getenv("HOME"); // NOLINT(concurrency-mt-unsafe): nothing here sets the environment
    if (home != nullptr && home[0] == '/') return home;
    passwd entry{};
    passwd* found = nullptr;
    std::vector<char> buffer(16384);
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_dir : "/";
}

} // namespace loftmere
