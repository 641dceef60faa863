#include "CleanerCore/Scanning/Scanners/TrashScanner.h"

#include "CleanerCore/Files/FS.h"

namespace loftmere {

Result<std::vector<ScanItem>> TrashScanner::scan(const ScanContext& context) const {
    std::vector<ScanItem> items;
    for (const std::string& child : FS::children(context.homeURL(".Trash"))) {
        items.push_back(ScanItem::make({.target = PathTarget{child},
                                        .size = FS::allocatedSize(child, context.isCancelled),
                                        .category = category(),
                                        .risk = Risk::review,
                                        .reason = "Already in the Trash",
                                        .lastUsed = FS::modificationDate(child)}));
    }
    return items;
}

} // namespace loftmere
