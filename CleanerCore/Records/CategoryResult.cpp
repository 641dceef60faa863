#include "CleanerCore/Records/CategoryResult.h"

namespace loftmere {

int64_t CategoryResult::totalSize() const {
    int64_t total = 0;
    for (const ScanItem& item : items) total += item.size;
    return total;
}

} // namespace loftmere
