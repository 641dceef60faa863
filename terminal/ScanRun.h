#pragma once

#include "terminal/Session.h"

#include <vector>

namespace loftmere {

// Scans the categories as opening their sections does, ticks included, with a live status meanwhile. Says
// which of them nothing looks for. `failed` when a category could not be scanned; its result tells why.
ExitStatus runScan(Session& session, const std::vector<CleanCategory>& categories);

} // namespace loftmere
