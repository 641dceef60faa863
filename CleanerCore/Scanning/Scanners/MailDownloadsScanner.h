#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

namespace loftmere {

// Proposes the copies that Mail made of attachments opened more than a week ago.
class MailDownloadsScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::mailDownloads; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override;
};

} // namespace loftmere
