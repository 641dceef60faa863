#pragma once

#include "CleanerCore/Platform/TreeWalk.h"

#include <functional>
#include <string>

namespace loftmere {

// Visits what a user sees of the tree below `root`, as walkTree does, but for hidden entries and for what is
// inside of packages: a package is told as one entry. Entries whose names are not valid UTF-8 are left out as
// well, since they are only ever handled as part of their folder.
bool walkVisibleTree(const std::string& root, const std::function<WalkStep(const WalkEntry&)>& visit);

} // namespace loftmere
