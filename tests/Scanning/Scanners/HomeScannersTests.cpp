#include "CleanerCore/Scanning/Scanners/CloudLocalCopiesScanner.h"
#include "CleanerCore/Scanning/Scanners/CrashReportsScanner.h"
#include "CleanerCore/Scanning/Scanners/IOSBackupsScanner.h"
#include "CleanerCore/Scanning/Scanners/InstallersScanner.h"
#include "CleanerCore/Scanning/Scanners/LargeOldFilesScanner.h"
#include "CleanerCore/Scanning/Scanners/LogsScanner.h"
#include "CleanerCore/Scanning/Scanners/MailDownloadsScanner.h"
#include "CleanerCore/Scanning/Scanners/OldDownloadsScanner.h"
#include "CleanerCore/Scanning/Scanners/SavedStateScanner.h"
#include "CleanerCore/Scanning/Scanners/UserCachesScanner.h"
#include "CleanerCore/Support/DateText.h"
#include "tests/Support/ScannerFixtures.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* backups = "Library/Application Support/MobileSync/Backup/";

std::string infoPlist(const std::string& body) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\">" + body + "</plist>";
}

// A file of this logical size that takes no space.
void sparseFile(const test::TemporaryHome& home, const std::string& name, int64_t size, double ageDays) {
    home.file(name, "");
    std::filesystem::resize_file(home.at(name), static_cast<uintmax_t>(size));
    home.setAgeDays(name, ageDays);
}

} // namespace

TEST(SystemJunk, CachesGoByNameFreshnessAndSize) {
    const test::TemporaryHome home;
    for (const char* name : {"Homebrew", "com.ostrel.loftmere", "CloudKit", "JetBrains", "fresh", "viewer"}) {
        home.fileOfSize(std::string("Library/Caches/") + name + "/data", 65536);
    }
    home.fileOfSize("Library/Caches/small/data", 61440);
    test::ageEverything(home, 2);
    home.setAgeDays("Library/Caches/fresh", 0.5 / 24);
    EXPECT_THAT(test::found(UserCachesScanner(), test::scanContext(home)), ElementsAre("viewer"));
    EXPECT_THAT(test::found(UserCachesScanner(), test::scanContext(home, {.minItemAgeHours = 0})),
                ElementsAre("fresh", "viewer"));
}

TEST(SystemJunk, OneLiveFileKeepsAWholeLogFolder) {
    const test::TemporaryHome home;
    for (const char* name : {"dead/a/b.log", "live/a/b.log", "plain.log", "DiagnosticReports/x.ips",
                             "Ostrel Loftmere/agent.log", "empty.log"}) {
        home.file(std::string("Library/Logs/") + name, name == std::string("empty.log") ? "" : "text");
    }
    test::ageEverything(home, 4);
    home.setAgeDays("Library/Logs/live/a/b.log", 2.9);
    const auto items = LogsScanner().scan(test::scanContext(home)).value();
    EXPECT_THAT(test::titlesOf(items), ElementsAre("dead", "plain.log"));
    EXPECT_EQ(items[0].reason, "Log files untouched for 3+ days");
    EXPECT_THAT(test::found(CrashReportsScanner(), test::scanContext(home)), ElementsAre("x.ips"));
}

TEST(SystemJunk, UseNotChangeDecidesOnStateAndAttachments) {
    const test::TemporaryHome home;
    const std::string mail = "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/";
    for (const int days : {6, 8, 13, 15}) {
        const std::string name = std::to_string(days);
        home.setAgeDays(home.file("Library/Saved Application State/" + name, "x"), days);
        home.setAgeDays(home.file(mail + name, "x"), days);
    }
    EXPECT_THAT(test::found(SavedStateScanner(), test::scanContext(home)), ElementsAre("15"));
    EXPECT_THAT(test::found(MailDownloadsScanner(), test::scanContext(home)), ElementsAre("13", "15", "8"));
}

TEST(IOSBackups, TheirOwnWordsElseTheFolders) {
    ::setenv("LC_ALL", "C", 1);
    ::setenv("TZ", "UTC", 1);
    const test::TemporaryHome home;
    const std::string fixtures = LOFTMERE_SOURCE_DIR "/tests/Fixtures/backup-info.";
    for (const char* form : {"xml", "binary"}) {
        home.folder(std::string(backups) + form);
        std::filesystem::copy_file(fixtures + form + ".plist", home.at(backups) + form + "/Info.plist");
    }
    home.file(std::string(backups) + "display/Info.plist",
              infoPlist("<dict><key>Display Name</key><string>Pad</string>"
                        "<key>Last Backup Date</key><string>no date</string></dict>"));
    home.file(std::string(backups) + "array/Info.plist", infoPlist("<array/>"));
    home.file(std::string(backups) + "broken/Info.plist", "bplist00 and so on");
    home.file(std::string(backups) + "bare/Manifest.db", "x");
    home.file(std::string(backups) + "a file", "x");
    for (const char* name : {"display", "array", "broken", "bare"}) {
        home.setDates(std::string(backups) + name, *fromISO8601("2025-12-24T10:00:00Z"));
    }
    const auto items =
        IOSBackupsScanner().scan(test::scanContext(home, {.minItemAgeHours = -1000000})).value();
    EXPECT_THAT(test::titlesOf(items), ElementsAre("Backup: Pad", "Backup: Zoë’s 📱", "Backup: Zoë’s 📱",
                                                   "Backup: array", "Backup: bare", "Backup: broken"));
    for (const ScanItem& item : items) {
        const char* date = item.title == "Backup: Zoë’s 📱" ? "Mar 1, 2026" : "Dec 24, 2025";
        EXPECT_EQ(item.reason,
                  std::string("Device backup from ") + date + ". Keep at least one recent backup.");
        EXPECT_EQ(item.risk, Risk::caution);
    }
}

TEST(IOSBackups, WhoWaitsToWriteIntoAPipeGoesOnWaiting) {
    const test::TemporaryHome home;
    home.file(std::string(backups) + "piped/Manifest.db", "x");
    const std::string pipe = home.at(backups) + "piped/Info.plist";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::atomic<bool> released = false;
    std::thread writer([&] { ::close(::open(pipe.c_str(), O_WRONLY)), released = true; });
    const ScanContext context = test::scanContext(home, {.minItemAgeHours = 0});
    for (int i = 0; i < 100; ++i) EXPECT_EQ(IOSBackupsScanner().scan(context).value().size(), 1U);
    EXPECT_FALSE(released);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    writer.join();
    ::close(reader);
}

TEST(Downloads, InstallersAndOldOnesShareOnlyDiscImages) {
    const test::TemporaryHome home;
    for (const char* name : {"a.DMG", "b.pkg", "c.mpkg", "d.iso", "e.zip"}) {
        home.setAgeDays(home.file(std::string("Downloads/") + name, "x"), 181);
    }
    home.setAgeDays(home.file("Downloads/used.zip", "x"), 179);
    home.setAgeDays(home.file("Desktop/young.pkg", "x"), 1);
    home.file("Desktop/fresh.pkg", "x");
    const ScanContext context = test::scanContext(home);
    EXPECT_THAT(test::found(OldDownloadsScanner(), context), ElementsAre("d.iso", "e.zip"));
    EXPECT_THAT(test::found(InstallersScanner(), context),
                ElementsAre("a.DMG", "b.pkg", "c.mpkg", "d.iso", "young.pkg"));
}

TEST(LargeOldFiles, SizeAgeDepthAndWhereNotToLook) {
    const test::TemporaryHome home;
    constexpr int64_t limit = int64_t{500} << 20;
    std::string deep = "1";
    for (int depth = 2; depth <= 12; ++depth) deep += "/" + std::to_string(depth);
    sparseFile(home, "exact", limit, 121);
    sparseFile(home, "less", limit - 1, 121);
    sparseFile(home, "young", limit, 119);
    sparseFile(home, deep + "/deep", limit + 2, 121);
    sparseFile(home, deep + "/13/deeper", limit, 121);
    sparseFile(home, "My.APPS/entered", limit + 1, 121);
    for (const char* place : {"Projects/Pictures", "Library", "a/node_modules", "My.APP", "x.FCPbundle"}) {
        sparseFile(home, std::string(place) + "/skipped", limit, 121);
    }
    home.link("link", home.at("exact"));
    home.link("My", home.at("My.APPS"));
    const auto items = LargeOldFilesScanner().scan(test::scanContext(home, {})).value();
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].title, "deep");
    EXPECT_EQ(items[1].title, "entered");
    EXPECT_EQ(items[2].size, limit);
    EXPECT_EQ(items[2].reason,
              "524.3 MB file not opened since " + DateText::medium(*items[2].lastUsed, "en_US"));

    ScanContext cancelled = test::scanContext(home, {});
    int asked = 0;
    cancelled.isCancelled = [&] { return ++asked > 1; };
    EXPECT_THAT(test::found(LargeOldFilesScanner(), cancelled), ElementsAre("exact"));
}

TEST(CloudLocalCopies, LargeUnopenedFilesByFallingSize) {
    const test::TemporaryHome home;
    constexpr int64_t limit = int64_t{25} << 20;
    const struct {
        const char* path;
        int64_t size;
        double ageDays;
    } copies[]{{"Library/Mobile Documents/deep/er/old", limit, 31},
               {"Library/Mobile Documents/young", limit + (5 << 20), 29},
               {"Library/Mobile Documents/small", limit - 4096, 31},
               {"Library/CloudStorage/OneDrive-Me/larger", limit + (1 << 20), 31},
               {"elsewhere/old", limit, 31}};
    for (const auto& [path, size, ageDays] : copies) home.setAgeDays(home.fileOfSize(path, size), ageDays);
    home.link("Library/CloudStorage/Link", home.at("elsewhere"));
    home.link("Library/Mobile Documents/link", home.at("elsewhere/old"));
    ScanContext context = test::scanContext(home);
    const auto items = CloudLocalCopiesScanner().scan(context).value();
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].id, "evict:" + home.at("Library/CloudStorage/OneDrive-Me/larger"));
    EXPECT_EQ(items[0].reason, "OneDrive: stays in the cloud, re-downloads when opened");
    EXPECT_EQ(items[1].id, "evict:" + home.at("Library/Mobile Documents/deep/er/old"));
    EXPECT_EQ(items[1].reason, "iCloud Drive: stays in the cloud, re-downloads when opened");
    for (const ScanItem& item : items) EXPECT_EQ(item.risk, Risk::safe);
    context.isCancelled = [] { return true; };
    EXPECT_THAT(CloudLocalCopiesScanner().scan(context).value(), IsEmpty());
}
