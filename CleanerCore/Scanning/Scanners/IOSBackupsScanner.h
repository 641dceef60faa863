#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes each backup of a phone or tablet, named by what its own "Info.plist" says.
class IOSBackupsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::iosBackups; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
