#include "CleanerCore/Scanning/ScannerRegistry.h"

#include <algorithm>
#include <utility>

namespace loftmere::ScannerRegistry {

Scanners all() {
    Scanners scanners = makeFolderChildrenScanners();
    for (Scanner& scanner : makeOtherScanners()) scanners.push_back(std::move(scanner));
    std::ranges::sort(scanners, {}, [](const Scanner& scanner) {
        return std::pair(traits(scanner->category()).group, scanner->category());
    });
    return scanners;
}

Scanners scanners(const std::set<CleanCategory>& categories) {
    Scanners wanted = all();
    std::erase_if(wanted, [&](const Scanner& scanner) { return !categories.contains(scanner->category()); });
    return wanted;
}

} // namespace loftmere::ScannerRegistry
