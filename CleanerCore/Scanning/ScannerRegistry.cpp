#include "CleanerCore/Scanning/ScannerRegistry.h"

#include "CleanerCore/Scanning/Duplicates/DuplicateScanner.h"
#include "CleanerCore/Scanning/Photos/SimilarPhotosScanner.h"
#include "CleanerCore/Scanning/Scanners/CloudLocalCopiesScanner.h"
#include "CleanerCore/Scanning/Scanners/CrashReportsScanner.h"
#include "CleanerCore/Scanning/Scanners/DockerScanner.h"
#include "CleanerCore/Scanning/Scanners/IOSBackupsScanner.h"
#include "CleanerCore/Scanning/Scanners/IOSUpdatesScanner.h"
#include "CleanerCore/Scanning/Scanners/InstallersScanner.h"
#include "CleanerCore/Scanning/Scanners/LargeOldFilesScanner.h"
#include "CleanerCore/Scanning/Scanners/LogsScanner.h"
#include "CleanerCore/Scanning/Scanners/MailDownloadsScanner.h"
#include "CleanerCore/Scanning/Scanners/OldDownloadsScanner.h"
#include "CleanerCore/Scanning/Scanners/PackageCachesScanner.h"
#include "CleanerCore/Scanning/Scanners/ProjectArtifactsScanner.h"
#include "CleanerCore/Scanning/Scanners/SavedStateScanner.h"
#include "CleanerCore/Scanning/Scanners/SimulatorScanner.h"
#include "CleanerCore/Scanning/Scanners/TrashScanner.h"
#include "CleanerCore/Scanning/Scanners/UserCachesScanner.h"
#include "CleanerCore/Scanning/Scanners/XcodeScanner.h"

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
        UserCachesScanner,
        LogsScanner,
        CrashReportsScanner,
        TrashScanner,
        SavedStateScanner,
        MailDownloadsScanner,
        XcodeScanner,
        SimulatorScanner,
        ProjectArtifactsScanner,
        PackageCachesScanner,
        DockerScanner,
        IOSBackupsScanner,
        IOSUpdatesScanner,
        OldDownloadsScanner,
        InstallersScanner,
        LargeOldFilesScanner,
        DuplicateScanner,
        SimilarPhotosScanner,
        CloudLocalCopiesScanner
    >();
    // clang-format on
}

Scanners scanners(const std::set<CleanCategory>& categories) {
    Scanners wanted = all();
    std::erase_if(wanted, [&](const auto& scanner) { return !categories.contains(scanner->category()); });
    return wanted;
}

} // namespace loftmere::ScannerRegistry
