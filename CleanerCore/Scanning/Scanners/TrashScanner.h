#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes each item of the Trash.
class TrashScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::trash; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
