#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes the download stores of developer tools that are at least a mebibyte large.
class PackageCachesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::packageCaches; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
