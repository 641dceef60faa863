#pragma once

#include "CleanerCore/Records/CleanCategory.h"

#include <span>

namespace loftmere {

// The categories that hold nothing but what comes back by itself or was thrown away: those of System Junk and
// of Developer Junk. A check-up scans them, and only their safe items are ever ticked unasked.
std::span<const CleanCategory> junkCategories();

bool isJunk(CleanCategory category);

} // namespace loftmere
