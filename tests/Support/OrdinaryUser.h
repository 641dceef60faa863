#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace loftmere::test {

// For its lifetime the whole program has the rights of an ordinary user, also when it was started by root, to
// whom nothing is unreadable. The folders and what stands below them are given to that user first.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const std::vector<std::string>& folders) {
        if (!wasRoot_) return;
        for (const std::string& folder : folders) {
            giveAway(folder);
            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
                giveAway(entry.path());
        }
        if (::seteuid(nobody) != 0) std::abort();
    }
    ~OrdinaryUser() {
        if (wasRoot_ && ::seteuid(0) != 0) std::abort();
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;

    static void giveAway(const std::string& path) {
        if (::lchown(path.c_str(), nobody, nobody) != 0) std::abort();
    }

    const bool wasRoot_ = ::geteuid() == 0;
};

} // namespace loftmere::test
