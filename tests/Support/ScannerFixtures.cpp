#include "tests/Support/ScannerFixtures.h"

#include "CleanerCore/Platform/TreeWalk.h"
#include "tests/Support/Photos.h"

#include <algorithm>

namespace loftmere::test {

namespace {

using enum CleanCategory;

// clang-format off
const ScannerFixture fixtures[] = {
    {userCaches, {{"Library/Caches/com.example.viewer/data", 100000}, {"Library/Caches/small", 100}},
     "Library/Caches/com.example.viewer"},
    {logs, {{"Library/Logs/Example/old.log", 5000}, {"Library/Logs/plain.log", 10}}, "Library/Logs/Example"},
    {crashReports,
     {{"Library/Logs/DiagnosticReports/viewer.ips", 3000}, {"Library/Logs/DiagnosticReports/Retired/viewer.ips", 3000}},
     "Library/Logs/DiagnosticReports/Retired"},
    {trash, {{".Trash/letter.txt", 20}, {".Trash/folder/picture", 20000}}, ".Trash/folder", true, false},
    {savedAppState, {{"Library/Saved Application State/com.example.viewer.savedState/windows.plist", 900}},
     "Library/Saved Application State/com.example.viewer.savedState"},
    {mailDownloads, {{"Library/Containers/com.apple.mail/Data/Library/Mail Downloads/1A2B/invoice.pdf", 7000}},
     "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/1A2B"},
    {xcode,
     {{"Library/Developer/Xcode/DerivedData/Viewer-abc/Build/viewer.o", 9000},
      {"Library/Developer/Xcode/Archives/2025-01-01/Viewer.xcarchive/Info.plist", 900}},
     "Library/Developer/Xcode/DerivedData/Viewer-abc"},
    {simulators,
     {{"Library/Developer/Xcode/iOS DeviceSupport/17.2/Symbols", 9000},
      {"Library/Developer/Xcode/iOS DeviceSupport/9.3/Symbols", 9000},
      {"Library/Developer/CoreSimulator/Caches/dyld/cache", 9000}},
     "Library/Developer/Xcode/iOS DeviceSupport/9.3"},
    {projectArtifacts,
     {{"Projects/viewer/package.json", 2},
      {"Projects/viewer/node_modules/left/index.js", 700002},
      {"Projects/viewer/node_modules/right/index.js", 700003}},
     "Projects/viewer/node_modules/left"},
    {packageCaches, {{"Library/Caches/pip/http/one", 700000}, {"Library/Caches/pip/http/two", 700001}},
     "Library/Caches/pip/http"},
    {docker, {}, nullptr, false, false},
    {iosBackups,
     {{"Library/Application Support/MobileSync/Backup/00008030/Manifest.db", 9000},
      {"Library/Application Support/MobileSync/Backup/00008030/Info.plist", 90}},
     "Library/Application Support/MobileSync/Backup/00008030"},
    {iosUpdates,
     {{"Library/iTunes/iPad Software Updates/iPad_16.ipsw", 9000},
      {"Library/iTunes/iPhone Software Updates/partial.ipsw/data", 9000}},
     "Library/iTunes/iPhone Software Updates/partial.ipsw"},
    {oldDownloads, {{"Downloads/paper.pdf", 9000}, {"Downloads/archive/one", 9000}}, "Downloads/archive"},
    {installers, {{"Downloads/Viewer.dmg", 9000}, {"Desktop/Editor.mpkg/Contents/Archive.pax", 9000}},
     "Desktop/Editor.mpkg"},
    {largeOldFiles, {{"Films/holiday.mov", 1 << 20}, {"Films/Raw/holiday.mov", 2 << 20}}},
    {duplicates, {{"Documents/plan.bin", 600000}, {"Music/plan copy.bin", 600000}}},
    {similarPhotos,
     {{"Pictures/Trip/large.jpg", 0, "photo.jpg"}, {"Pictures/small.jpg", 0, "half.jpg"},
      {"Pictures/slow.jpg", 0, "progressive.jpg"}, {"Pictures/phone.heic", 0, "photo.heic"}, {"Pictures/web.png", 0, "color.png"}}},
    {cloudLocalCopies, {{"Library/Mobile Documents/com~apple~CloudDocs/film.mov", 26 << 20}}},
};
// clang-format on

} // namespace

void ScannerFixture::fill(const TemporaryHome& home) const {
    for (const auto& [path, size, photo] : files) {
        if (photo != nullptr)
            home.file(path, photoContent(photo));
        else
            home.fileOfSize(path, size);
    }
}

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

std::vector<std::string> found(const JunkScanner& scanner, const ScanContext& context) {
    return titlesOf(scanner.scan(context).value());
}

} // namespace loftmere::test
