#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes the saved window state of applications not used for two weeks.
class SavedStateScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::savedAppState; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
