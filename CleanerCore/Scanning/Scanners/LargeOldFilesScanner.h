#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes files of at least `largeFileMinMB` (logical size) not opened for `largeFileAgeDays` days, wherever
// in the home folder they are, apart from libraries, packages and other volumes.
class LargeOldFilesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::largeOldFiles; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
