#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes disk images and packages that applications were installed from.
class InstallersScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::installers; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
