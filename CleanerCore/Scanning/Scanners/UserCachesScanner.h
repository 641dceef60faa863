#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes each application's cache folder, but not those of the system's services, of this program, and of
// the developer tools that have a category of their own.
class UserCachesScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::userCaches; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
