#pragma once

#include <string>
#include <vector>

namespace loftmere::test {

// For its lifetime the whole program has the rights of an ordinary user, also when it was started by root, to
// whom nothing is unreadable. The folders and what stands below them
// are given to that user first.
class OrdinaryUser {
public:
    explicit OrdinaryUser(const std::vector<std::string>& folders);
    ~OrdinaryUser();
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    bool wasRoot_;
};

} // namespace loftmere::test
