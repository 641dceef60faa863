#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes each crash and diagnostic report.
class CrashReportsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::crashReports; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
