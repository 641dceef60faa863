#include "tests/Support/OrdinaryUser.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace loftmere::test {

namespace {

constexpr uid_t nobody = 65534;

void giveAway(const std::string& path) {
    if (::lchown(path.c_str(), nobody, nobody) != 0) std::abort();
}

} // namespace

OrdinaryUser::OrdinaryUser(const std::vector<std::string>& folders) : wasRoot_(::geteuid() == 0) {
    if (!wasRoot_) return;
    for (const std::string& folder : folders) {
        giveAway(folder);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
            giveAway(entry.path());
    }
    if (::seteuid(nobody) != 0) std::abort();
}

OrdinaryUser::~OrdinaryUser() {
    if (wasRoot_ && ::seteuid(0) != 0) std::abort();
}

} // namespace loftmere::test
