#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

#include <array>
#include <memory>
#include <set>
#include <vector>

namespace loftmere::ScannerRegistry {

using Scanner = std::unique_ptr<JunkScanner>;
using Scanners = std::vector<Scanner>;

// Every scanner, made anew on each call, one for each category that has one. They are in the order of the
// sections on screen, and within a section in the order of the categories.
Scanners all();

// Those of `all` whose category is wanted, in the same order.
Scanners scanners(const std::set<CleanCategory>& categories);

// What makes the scanners. Each function is defined in the scanner's own source file, next to its class.

Scanners makeFolderChildrenScanners(); // one for each row of their table

Scanner makeTrashScanner();
Scanner makeXcodeScanner();
Scanner makeSimulatorScanner(double toolLimit = 30); // seconds to wait for the developer tools
Scanner makeProjectArtifactsScanner();
Scanner makePackageCachesScanner();
Scanner makeDockerScanner(double toolLimit = 20); // seconds to wait for Docker
Scanner makeIOSBackupsScanner();
Scanner makeLargeOldFilesScanner();
Scanner makeDuplicateScanner();
Scanner makeSimilarPhotosScanner();
Scanner makeCloudLocalCopiesScanner();

// All of the above but the first. A scanner with a source file of its own has one line there and one here.
inline auto makeOtherScanners() {
    return std::to_array<Scanner>({
        makeTrashScanner(),
        makeXcodeScanner(),
        makeSimulatorScanner(),
        makeProjectArtifactsScanner(),
        makePackageCachesScanner(),
        makeDockerScanner(),
        makeIOSBackupsScanner(),
        makeLargeOldFilesScanner(),
        makeDuplicateScanner(),
        makeSimilarPhotosScanner(),
        makeCloudLocalCopiesScanner(),
    });
}

} // namespace loftmere::ScannerRegistry
