#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes firmware files that were downloaded to update a phone or tablet.
class IOSUpdatesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::iosUpdates; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
