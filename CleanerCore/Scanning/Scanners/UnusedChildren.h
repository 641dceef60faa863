#pragma once

#include "CleanerCore/Scanning/Scanners/PathFinding.h"

namespace loftmere {

// Proposes as `finding` each child of `folder` that was last used more than `days` days before the scan, or
// of which no date is known. What was found so far when the scan is cancelled.
std::vector<ScanItem> unusedChildren(const ScanContext& context, const std::string& folder, int64_t days,
                                     const PathFinding& finding);

} // namespace loftmere
