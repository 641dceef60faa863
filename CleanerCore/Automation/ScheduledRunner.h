#pragma once

#include "CleanerCore/Records/CleanReport.h"

#include <string>

namespace loftmere {

// The background agent's pass over the user's rules.
class ScheduledRunner {
public:
    // The result of a run on one line, such as "Freed 1.2 GB, 3 MB to quarantine, 1 failed". Any thread.
    static std::string summarize(const CleanReport& report, bool dryRun);
};

} // namespace loftmere
