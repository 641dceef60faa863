#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Support/Result.h"

#include <string>

namespace loftmere {

// Whether a failure says that no space is left.
bool isDiskFull(const Failure& failure);

// A few megabytes put by while there is room, so that a manifest can be written when the disk is full: that
// is when a cleaner is needed most. Any thread.
class SpaceReserve {
public:
    explicit SpaceReserve(const Paths& paths);

    // Puts the space by, unless that is done or would leave little to others.
    void keep() const;

    // Gives it back to the file system. False when there was none.
    bool spend() const;

private:
    std::string file_;
};

// Runs `attempt`, and once more with the reserve spent when there was no space left.
template <class Attempt> auto withReserve(const SpaceReserve& reserve, const Attempt& attempt) {
    auto done = attempt();
    if (!done && isDiskFull(done.error()) && reserve.spend()) return attempt();
    return done;
}

} // namespace loftmere
