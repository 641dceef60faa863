#pragma once

#include "terminal/Session.h"

#include <vector>

namespace loftmere {

// What the model holds of the categories after a scan: findings, ticks, totals and what went wrong.

// For people. `names` are those of the command line. Without `full`, a terminal sees only the largest
// findings of each category.
void printScan(Session& session, const std::vector<CleanCategory>& categories,
               const std::vector<std::string>& names, bool full);

// {"results": [{"category", "items", "error"?, "totalSize"}...], "selected": [id...]}, in the order of the
// engine.
void printScanJson(Session& session, const std::vector<CleanCategory>& categories);

} // namespace loftmere
