#pragma once

#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Removal/Cleaning/CleanPlan.h"

#include <vector>

namespace loftmere {

// What a clean would do as the disk stands now.
struct CleanPreview {
    std::vector<CleanPlan> plans; // one for each item, in their order
    CleanReport report;           // that of a dry run
};

} // namespace loftmere
