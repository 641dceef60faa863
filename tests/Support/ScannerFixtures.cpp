#include "tests/Support/ScannerFixtures.h"

#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/TreeWalk.h"

#include <algorithm>

namespace loftmere::test {

namespace {

using enum CleanCategory;

void fillUserCaches(const TemporaryHome& home) {
    home.fileOfSize("Library/Caches/com.example.viewer/data", 100000);
    home.fileOfSize("Library/Caches/small", 100);
}

void fillLogs(const TemporaryHome& home) {
    home.fileOfSize("Library/Logs/Example/old.log", 5000);
    home.fileOfSize("Library/Logs/plain.log", 10);
}

void fillCrashReports(const TemporaryHome& home) {
    home.fileOfSize("Library/Logs/DiagnosticReports/viewer.ips", 3000);
    home.fileOfSize("Library/Logs/DiagnosticReports/Retired/viewer.ips", 3000);
}

void fillTrash(const TemporaryHome& home) {
    home.fileOfSize(".Trash/letter.txt", 20);
    home.fileOfSize(".Trash/folder/picture", 20000);
}

void fillSavedState(const TemporaryHome& home) {
    home.fileOfSize("Library/Saved Application State/com.example.viewer.savedState/windows.plist", 900);
}

void fillMailDownloads(const TemporaryHome& home) {
    home.fileOfSize("Library/Containers/com.apple.mail/Data/Library/Mail Downloads/1A2B/invoice.pdf", 7000);
}

void fillBackups(const TemporaryHome& home) {
    home.fileOfSize("Library/Application Support/MobileSync/Backup/00008030/Manifest.db", 9000);
    home.file("Library/Application Support/MobileSync/Backup/00008030/Info.plist",
              "<plist><dict><key>Device Name</key><string>Phone</string></dict></plist>");
}

void fillFirmware(const TemporaryHome& home) {
    home.fileOfSize("Library/iTunes/iPad Software Updates/iPad_16.ipsw", 9000);
    home.fileOfSize("Library/iTunes/iPhone Software Updates/partial.ipsw/data", 9000);
}

void fillOldDownloads(const TemporaryHome& home) {
    home.fileOfSize("Downloads/paper.pdf", 9000);
    home.fileOfSize("Downloads/archive/one", 9000);
}

void fillInstallers(const TemporaryHome& home) {
    home.fileOfSize("Downloads/Viewer.dmg", 9000);
    home.fileOfSize("Desktop/Editor.mpkg/Contents/Archive.pax", 9000);
}

void fillLargeOldFiles(const TemporaryHome& home) {
    home.fileOfSize("Films/holiday.mov", 1 << 20);
    home.fileOfSize("Films/Raw/holiday.mov", 2 << 20);
}

void fillXcode(const TemporaryHome& home) {
    home.fileOfSize("Library/Developer/Xcode/DerivedData/Viewer-abc/Build/viewer.o", 9000);
    home.fileOfSize("Library/Developer/Xcode/Archives/2025-01-01/Viewer.xcarchive/Info.plist", 900);
}

void fillSimulators(const TemporaryHome& home) {
    home.fileOfSize("Library/Developer/Xcode/iOS DeviceSupport/17.2/Symbols", 9000);
    home.fileOfSize("Library/Developer/Xcode/iOS DeviceSupport/9.3/Symbols", 9000);
    home.fileOfSize("Library/Developer/CoreSimulator/Caches/dyld/cache", 9000);
}

void fillProjects(const TemporaryHome& home) {
    home.file("Projects/viewer/package.json", "{}");
    home.fileOfSize("Projects/viewer/node_modules/left/index.js", 700002);
    home.fileOfSize("Projects/viewer/node_modules/right/index.js", 700003);
}

void fillPackageCaches(const TemporaryHome& home) {
    home.fileOfSize("Library/Caches/pip/http/one", 700000);
    home.fileOfSize("Library/Caches/pip/http/two", 700001);
}

void fillDuplicates(const TemporaryHome& home) {
    home.file("Documents/plan.bin", std::string(600000, 'p'));
    home.file("Music/plan copy.bin", std::string(600000, 'p'));
}

void fillCloudCopies(const TemporaryHome& home) {
    home.fileOfSize("Library/Mobile Documents/com~apple~CloudDocs/film.mov", 26 << 20);
}

void fillPhotos(const TemporaryHome& home) {
    const std::string pictures = LOFTMERE_SOURCE_DIR "/tests/Scanning/photos/";
    home.file("Pictures/walk.jpg", readFile(pictures + "grey.jpg").value_or(""));
    home.file("Documents/Letters/walk.jpg", readFile(pictures + "grey.jpg").value_or(""));
}

// clang-format off
constexpr ScannerFixture fixtures[] = {
    {userCaches,    fillUserCaches,    "Library/Caches/com.example.viewer"},
    {logs,          fillLogs,          "Library/Logs/Example"},
    {crashReports,  fillCrashReports,  "Library/Logs/DiagnosticReports/Retired"},
    {trash,         fillTrash,         ".Trash/folder", true, false},
    {savedAppState, fillSavedState,    "Library/Saved Application State/com.example.viewer.savedState"},
    {mailDownloads, fillMailDownloads, "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/1A2B"},
    {xcode,         fillXcode,         "Library/Developer/Xcode/DerivedData/Viewer-abc"},
    {simulators,    fillSimulators,    "Library/Developer/CoreSimulator/Caches/dyld"},
    {projectArtifacts, fillProjects,   "Projects/viewer/node_modules/left"},
    {packageCaches, fillPackageCaches, "Library/Caches/pip/http"},
    {docker,        [](auto&) {},      nullptr, false, false},
    {iosBackups,    fillBackups,       "Library/Application Support/MobileSync/Backup/00008030"},
    {iosUpdates,    fillFirmware,      "Library/iTunes/iPhone Software Updates/partial.ipsw"},
    {oldDownloads,  fillOldDownloads,  "Downloads/archive"},
    {installers,    fillInstallers,    "Desktop/Editor.mpkg"},
    {largeOldFiles, fillLargeOldFiles},
    {duplicates,    fillDuplicates},
    {similarPhotos, fillPhotos},
    {cloudLocalCopies, fillCloudCopies},
};
// clang-format on

} // namespace

std::span<const ScannerFixture> scannerFixtures() {
    return fixtures;
}

const ScannerFixture* scannerFixture(CleanCategory category) {
    const auto* found = std::ranges::find(fixtures, category, &ScannerFixture::category);
    return found == std::end(fixtures) ? nullptr : found;
}

void ageEverything(const TemporaryHome& home, double days) {
    const Date date = addSeconds(currentDate(), -86400.0 * days);
    for (const std::string& path : everythingBelow(home)) home.setDates(path, date);
}

std::vector<std::string> everythingBelow(const TemporaryHome& home) {
    std::vector<std::string> paths;
    walkTree(home.path(), [&](const WalkEntry& entry) {
        paths.push_back(entry.path);
        return WalkStep::proceed;
    });
    return paths;
}

ScanContext scanContext(const TemporaryHome& home, AppConfig config) {
    return {.paths = home.paths(),
            .config = std::move(config),
            .now = currentDate(),
            .isCancelled = [] { return false; },
            .report = [](CleanCategory, const std::string&) {}};
}

std::vector<std::string> titlesOf(const std::vector<ScanItem>& items) {
    std::vector<std::string> titles;
    for (const ScanItem& item : items) titles.push_back(item.title);
    std::ranges::sort(titles);
    return titles;
}

} // namespace loftmere::test
