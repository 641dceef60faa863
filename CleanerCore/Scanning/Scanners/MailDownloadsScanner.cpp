#include "CleanerCore/Scanning/Scanners/MailDownloadsScanner.h"

#include "CleanerCore/Scanning/Scanners/UnusedChildren.h"

namespace loftmere {

Result<std::vector<ScanItem>> MailDownloadsScanner::scan(const ScanContext& context) const {
    return unusedChildren(context, context.lib("Containers/com.apple.mail/Data/Library/Mail Downloads"), 7,
                          {.category = category(),
                           .risk = Risk::safe,
                           .reason = "Copy of an attachment you opened; the original stays in Mail"});
}

} // namespace loftmere
