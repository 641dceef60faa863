#include "CleanerCore/Scanning/ScannerRegistry.h"

#include "CleanerCore/Scanning/Scanners/SimilarPhotosScanner.h"
#include "CleanerCore/Scanning/Scanners/TrashScanner.h"

namespace loftmere::ScannerRegistry {

namespace {

template <class... Types> Scanners make() {
    Scanners scanners;
    (scanners.push_back(std::make_unique<Types>()), ...);
    return scanners;
}

} // namespace

Scanners all() {
    // clang-format off
    return make<
        TrashScanner,
        SimilarPhotosScanner
    >();
    // clang-format on
}

Scanners scanners(const std::set<CleanCategory>& categories) {
    Scanners wanted = all();
    std::erase_if(wanted, [&](const auto& scanner) { return !categories.contains(scanner->category()); });
    return wanted;
}

} // namespace loftmere::ScannerRegistry
