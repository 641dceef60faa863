#pragma once

#include "CleanerCore/Records/ScanItem.h"
#include "LoftmereApp/Model/CleanPreview.h"
#include "terminal/Session.h"

#include <vector>

namespace loftmere {

// How many of the items a clean would act on, and their bytes.
struct Extent {
    size_t count = 0;
    int64_t bytes = 0;
};
Extent extentOf(const std::vector<ScanItem>& items, const CleanPreview& preview);

// Shows what a clean would do, item by item, grouped by what becomes of them. Without `full`, a terminal sees
// only the first items of each group.
void printPreview(Session& session, const std::vector<ScanItem>& items, const CleanPreview& preview,
                  bool full);

} // namespace loftmere
