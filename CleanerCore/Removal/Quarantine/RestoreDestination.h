#pragma once

#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Platform/Place.h"
#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Support/Result.h"

#include <string>
#include <vector>

namespace loftmere {

// Where a quarantined item goes back to. The way there is followed once; what is judged is what is used.
class RestoreDestination {
public:
    // Creates nothing. Fails for a place where no item can have stood before it was quarantined: a path that
    // is not absolute and plain, one inside the program's own folder, one whose way runs through a link that
    // leads out of the home folder, and one from which the policy lets nothing be taken, as written or where
    // it really leads. The user's own rules have no place in `policy`: they may be younger than the session.
    static Result<RestoreDestination> open(const Paths& paths, const SafetyPolicy& policy,
                                           const std::string& originalPath);

    // Something stands there; a dangling link does.
    bool isTaken() const;

    // Creates the missing parent folders.
    Result<Place> make() const;

private:
    RestoreDestination(Place anchor, std::vector<std::string> below)
        : anchor_(std::move(anchor)), below_(std::move(below)) {}

    Place anchor_;                   // in the lowest folder that exists
    std::vector<std::string> below_; // the rest of the way, from the item of `anchor_` on
};

// The real path of a folder that exists; the path itself when it cannot be told.
std::string realFolderPath(const std::string& path);

} // namespace loftmere
