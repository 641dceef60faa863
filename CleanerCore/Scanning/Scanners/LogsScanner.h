#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes log files and folders in which nothing has changed for `logAgeDays` days.
class LogsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::logs; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
