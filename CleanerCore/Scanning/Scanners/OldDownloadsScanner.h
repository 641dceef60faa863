#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes downloads not opened for `oldDownloadsDays` days, except those that are installers.
class OldDownloadsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::oldDownloads; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
