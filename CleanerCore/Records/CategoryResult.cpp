#include "CleanerCore/Records/CategoryResult.h"

#include "CleanerCore/Support/ByteSum.h"

namespace loftmere {

int64_t CategoryResult::totalSize() const {
    int64_t total = 0;
    for (const ScanItem& item : items) addBytes(total, item.size);
    return total;
}

} // namespace loftmere
