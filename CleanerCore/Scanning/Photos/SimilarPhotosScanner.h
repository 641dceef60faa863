#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Finds photographs that look alike though their bytes differ.
class SimilarPhotosScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::similarPhotos; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
