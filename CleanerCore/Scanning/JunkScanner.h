#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScanContext.h"
#include "CleanerCore/Support/Result.h"

#include <vector>

namespace loftmere {

// Finds what could go in one category. A scanner holds no state, never writes, never waits on the main
// thread, and asks `context.isCancelled` between units of work: cancelled, it answers what it has found so
// far.
class JunkScanner {
public:
    virtual ~JunkScanner() = default;

    virtual CleanCategory category() const = 0;

    // Called on a worker thread. A failure costs this category only; its sentence is shown as the reason.
    virtual Result<std::vector<ScanItem>> scan(const ScanContext& context) const = 0;
};

} // namespace loftmere
