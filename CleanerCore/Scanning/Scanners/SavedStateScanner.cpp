#include "CleanerCore/Scanning/Scanners/SavedStateScanner.h"

#include "CleanerCore/Scanning/Scanners/UnusedChildren.h"

namespace loftmere {

Result<std::vector<ScanItem>> SavedStateScanner::scan(const ScanContext& context) const {
    return unusedChildren(context, context.lib("Saved Application State"), 14,
                          {.category = category(),
                           .risk = Risk::safe,
                           .reason = "Window positions restored at launch; apps recreate it"});
}

} // namespace loftmere
