#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/Paths.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/PathText.h"
#include "CleanerCore/Support/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <span>
#include <string_view>

// The scanners that look at the children of a folder, judge each child as a whole and propose it as a whole.
// The table below says how they differ.

namespace loftmere {

namespace {

using Names = std::span<const std::string_view>;

struct Folder {
    const char* path;   // below the home folder; null where a row has fewer folders
    const char* reason; // "{}" stands for the days of the age rule
};

enum class Age {
    any,
    lastUsed,    // the child's own date of last use
    newestEntry, // the newest modification date in the child, so that one live file keeps a whole folder
};

struct AgeRule {
    Age age = Age::any;
    int64_t days = 0;                       // the child must be older than this many days
    int64_t AppConfig::* setting = nullptr; // the days, where the user sets them
    bool undatedIsOld = false;
};

struct Row {
    CleanCategory category;
    Risk risk;
    std::array<Folder, 4> folders;
    Names skippedNames = {};
    Names skippedExtensions = {}; // lower case, as in `onlyExtensions`
    Names onlyExtensions = {};    // empty for all
    AgeRule age = {};
    int64_t minimum = 1;         // allocated bytes
    bool reportsOnlyOld = false; // else every child is reported
};

constexpr std::array<std::string_view, 20> cacheExclusions{
    // this program's own
    AppInfo::bundleID,
    AppInfo::name,
    // caches that system services need
    "com.apple.bird",
    "com.apple.cloudkit",
    "CloudKit",
    "com.apple.akd",
    "com.apple.nsurlsessiond",
    "com.apple.containermanagerd",
    "FamilyCircle",
    "com.apple.ap.adprivacyd",
    // the category of package caches
    "Homebrew",
    "Yarn",
    "pip",
    "pypoetry",
    "CocoaPods",
    "org.swift.swiftpm",
    "pnpm",
    "go-build",
    "ms-playwright",
    "JetBrains",
};

// The crash reports have a category of their own, and this program's own logs stay.
constexpr std::array<std::string_view, 2> logExclusions{"DiagnosticReports", AppInfo::name};

// A disk image with the extension "iso" may hold anything, so it can also be an old download.
constexpr std::array<std::string_view, 3> installersInDownloads{"dmg", "pkg", "mpkg"};
constexpr std::array<std::string_view, 4> installers{"dmg", "pkg", "mpkg", "iso"};

constexpr const char* firmware = "Firmware file; re-downloaded if ever needed";
constexpr const char* installer = "Installer disk image or package; the app is usually already installed";

// clang-format off
constexpr std::array table{
    Row{.category = CleanCategory::userCaches, .risk = Risk::safe,
        .folders = {{{"Library/Caches", "App cache; rebuilt automatically when needed"}}},
        .skippedNames = cacheExclusions,
        .minimum = 65536},
    Row{.category = CleanCategory::logs, .risk = Risk::safe,
        .folders = {{{"Library/Logs", "Log files untouched for {}+ days"}}},
        .skippedNames = logExclusions,
        .age = {.age = Age::newestEntry, .setting = &AppConfig::logAgeDays},
        .reportsOnlyOld = true},
    Row{.category = CleanCategory::crashReports, .risk = Risk::safe,
        .folders = {{{"Library/Logs/DiagnosticReports", "Crash/diagnostic report already sent (or never needed)"}}}},
    Row{.category = CleanCategory::savedAppState, .risk = Risk::safe,
        .folders = {{{"Library/Saved Application State", "Window positions restored at launch; apps recreate it"}}},
        .age = {.age = Age::lastUsed, .days = 14, .undatedIsOld = true}},
    Row{.category = CleanCategory::mailDownloads, .risk = Risk::safe,
        .folders = {{{"Library/Containers/com.apple.mail/Data/Library/Mail Downloads",
                      "Copy of an attachment you opened; the original stays in Mail"}}},
        .age = {.age = Age::lastUsed, .days = 7, .undatedIsOld = true}},
    Row{.category = CleanCategory::iosUpdates, .risk = Risk::safe,
        .folders = {{{"Library/iTunes/iPhone Software Updates", firmware},
                     {"Library/iTunes/iPad Software Updates", firmware},
                     {"Library/iTunes/iPod Software Updates", firmware},
                     {"Library/Group Containers/K36BKF7T3D.group.com.apple.configurator/Library/Caches/Assets/TTU/com.apple.itunes.ipsw",
                      "Cached firmware file"}}}},
    Row{.category = CleanCategory::oldDownloads, .risk = Risk::review,
        .folders = {{{"Downloads", "Not opened in {}+ days"}}},
        .skippedExtensions = installersInDownloads,
        .age = {.age = Age::lastUsed, .setting = &AppConfig::oldDownloadsDays}},
    Row{.category = CleanCategory::installers, .risk = Risk::review,
        .folders = {{{"Downloads", installer}, {"Desktop", installer}}},
        .onlyExtensions = installers},
};
// clang-format on

// Enough entries to meet a live file in all but the largest log folders.
constexpr int entriesLookedAt = 4000;

bool isAmong(Names names, const std::string& name) {
    return std::ranges::find(names, name) != names.end();
}

class FolderChildrenScanner : public JunkScanner {
public:
    explicit FolderChildrenScanner(const Row& row) : row_(row) {}

    CleanCategory category() const override { return row_.category; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
        std::vector<ScanItem> items;
        for (const Folder& folder : row_.folders) {
            if (folder.path != nullptr) scan(folder, context, items);
        }
        return items;
    }

private:
    void scan(const Folder& folder, const ScanContext& context, std::vector<ScanItem>& items) const {
        const PathFinding finding{.category = row_.category,
                                  .risk = row_.risk,
                                  .reason = fmt::format(fmt::runtime(folder.reason), days(context)),
                                  .minimum = row_.minimum};
        for (const std::string& child : FS::children(context.homeURL(folder.path))) {
            if (row_.reportsOnlyOld && !isWanted(child)) continue;
            if (context.isCancelled()) break;
            if (!row_.reportsOnlyOld) context.report(row_.category, child);
            if (!isWanted(child) || !isOld(child, context)) continue;
            if (row_.reportsOnlyOld) context.report(row_.category, child);
            finding.propose(context, child, items);
        }
    }

    bool isWanted(const std::string& child) const {
        const std::string extension = asciiLowercased(pathExtension(child));
        return !isAmong(row_.skippedNames, lastPathComponent(child)) &&
               !isAmong(row_.skippedExtensions, extension) &&
               (row_.onlyExtensions.empty() || isAmong(row_.onlyExtensions, extension));
    }

    bool isOld(const std::string& child, const ScanContext& context) const {
        if (row_.age.age == Age::any) return true;
        const auto date = row_.age.age == Age::lastUsed ? FS::lastUsedDate(child)
                                                        : FS::newestModification(child, entriesLookedAt);
        return date ? *date < context.daysAgo(days(context)) : row_.age.undatedIsOld;
    }

    int64_t days(const ScanContext& context) const {
        return row_.age.setting != nullptr ? context.config.*row_.age.setting : row_.age.days;
    }

    const Row& row_;
};

// The Trash holds what the user has put there, so no child is too young or too small.
class TrashScanner : public JunkScanner {
public:
    CleanCategory category() const override { return CleanCategory::trash; }

    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override {
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
};

} // namespace

ScannerRegistry::Scanners ScannerRegistry::makeFolderChildrenScanners() {
    Scanners scanners;
    for (const Row& row : table) scanners.push_back(std::make_unique<FolderChildrenScanner>(row));
    return scanners;
}

ScannerRegistry::Scanner ScannerRegistry::makeTrashScanner() {
    return std::make_unique<TrashScanner>();
}

} // namespace loftmere
