#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes to release large local copies of synced files that have not been opened for a month.
class CloudLocalCopiesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::cloudLocalCopies; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
