#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes what Xcode makes again by itself, and old archives, which it cannot make again.
class XcodeScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::xcode; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
