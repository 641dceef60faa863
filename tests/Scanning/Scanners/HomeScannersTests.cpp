#include "CleanerCore/Platform/FileStatus.h"
#include "tests/Support/Mounted.h"
#include "tests/Support/ScannerFixtures.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>
#include <utility>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;
using enum CleanCategory;

namespace {

constexpr const char* backups = "Library/Application Support/MobileSync/Backup/";

std::string infoPlist(const std::string& body) {
    return "<?xml version=\"1.0\"?><plist version=\"1.0\">" + body + "</plist>";
}

} // namespace

TEST(SystemJunk, CachesGoByNameAndSize) {
    const test::TemporaryHome home;
    home.fileOfSize("Library/Caches/small/data", 61440);
    test::makeFiles(
        home, "Library/Caches/{}/data",
        "viewer|com.ostrel.loftmere|Ostrel Loftmere|com.apple.bird|com.apple.cloudkit|CloudKit|com.apple.akd|"
        "com.apple.nsurlsessiond|com.apple.containermanagerd|FamilyCircle|com.apple.ap.adprivacyd|Homebrew|"
        "Yarn|pip|pypoetry|CocoaPods|org.swift.swiftpm|pnpm|go-build|ms-playwright|JetBrains",
        65536);
    test::ageEverything(home, 2);
    EXPECT_THAT(test::found(userCaches, test::scanContext(home)), ElementsAre("viewer"));
}

TEST(SystemJunk, OneLiveFileKeepsAWholeLogFolder) {
    const test::TemporaryHome home;
    test::makeFiles(home, "Library/Logs/{}",
                    "dead/a/b.log|live/a/b.log|plain.log|DiagnosticReports/x.ips|Ostrel Loftmere/agent.log");
    home.file("Library/Logs/empty.log", "");
    test::ageEverything(home, 4);
    test::age(home, "Library/Logs/live/a/b.log", 2.9);
    ScanContext context = test::scanContext(home);
    std::set<std::string> reports;
    context.report = [&](CleanCategory, const std::string& path) { reports.insert(path); };
    EXPECT_THAT(test::found(logs, context), ElementsAre("dead", "plain.log"));
    EXPECT_THAT(reports, ElementsAre(home.at("Library/Logs/dead"), home.at("Library/Logs/empty.log"),
                                     home.at("Library/Logs/plain.log")));
    EXPECT_THAT(test::found(crashReports, test::scanContext(home)), ElementsAre("x.ips"));
}

TEST(SystemJunk, StateAndAttachmentsHaveAgesOfTheirOwn) {
    const test::TemporaryHome home;
    for (const char* folder : {"Library/Saved Application State/{}",
                               "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/{}"}) {
        test::makeFiles(home, folder, "7|8|14|15");
        for (const int days : {7, 8, 14, 15})
            test::age(home, fmt::format(fmt::runtime(folder), days), 100, days);
    }
    EXPECT_THAT(test::found(savedAppState, test::scanContext(home)), ElementsAre("15"));
    EXPECT_THAT(test::found(mailDownloads, test::scanContext(home)), ElementsAre("14", "15", "8"));
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
    test::makeFiles(home, "Library/Application Support/MobileSync/Backup/{}",
                    "broken/Info.plist|bare/Manifest.db|a file");
    test::ageEverything(home, 2);
    const auto items = test::scan(iosBackups, test::scanContext(home));
    EXPECT_THAT(test::titlesOf(items), ElementsAre("Backup: Pad", "Backup: Zoë’s 📱", "Backup: Zoë’s 📱",
                                                   "Backup: array", "Backup: bare", "Backup: broken"));
    for (const ScanItem& item : items) {
        const char* date = item.title == "Backup: Zoë’s 📱" ? "Mar 1, 2026" : "Feb 17, 2026";
        EXPECT_EQ(item.reason,
                  std::string("Device backup from ") + date + ". Keep at least one recent backup.");
    }
}

TEST(IOSBackupsThreaded, WhoWaitsToWriteIntoAPipeGoesOnWaiting) {
    const test::TemporaryHome home;
    home.file(std::string(backups) + "piped/Manifest.db", "x");
    const std::string pipe = home.at(backups) + "piped/Info.plist";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::atomic<bool> released = false;
    std::thread writer([&] { ::close(::open(pipe.c_str(), O_WRONLY)), released = true; });
    test::ageEverything(home, 2);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(test::scan(iosBackups, test::scanContext(home)).size(), 1U);
    EXPECT_FALSE(released);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    writer.join();
    ::close(reader);
}

TEST(Downloads, InstallersAndOldOnesShareOnlyDiscImages) {
    const test::TemporaryHome home;
    test::makeFiles(home, "Downloads/{}", "a.DMG|b.pkg|c.mpkg|d.iso|e.zip");
    test::ageEverything(home, 181);
    home.file("Desktop/young.pkg", "x");
    test::age(home, "Desktop/young.pkg", 1);
    EXPECT_THAT(test::found(oldDownloads, test::scanContext(home)), ElementsAre("d.iso", "e.zip"));
    EXPECT_THAT(test::found(installers, test::scanContext(home)),
                ElementsAre("a.DMG", "b.pkg", "c.mpkg", "d.iso", "young.pkg"));
}

TEST(LargeOldFiles, SizeDepthAndWhereNotToLook) {
    const test::TemporaryHome home;
    constexpr int64_t limit = int64_t{500} << 20;
    std::string deep = "1";
    for (int depth = 2; depth <= 12; ++depth) deep += "/" + std::to_string(depth);
    const std::pair<std::string, int64_t> sizes[]{
        {"exact", 0}, {"less", -1}, {deep + "/deep", 2}, {deep + "/13/deeper", 0}, {"My.APPS/entered", 1}};
    test::makeFiles(home, "{}/skipped",
                    "Projects/Pictures|Library|.Trash|a/node_modules|.git|Applications|.docker|.cache|"
                    "a.photoslibrary|a.musiclibrary|a.tvlibrary|a.APP|a.FCPbundle|a.logicx|a.sparsebundle|"
                    "a.vmwarevm|a.pvm|a.utm");
    for (const auto& [name, more] : sizes) home.file(name, "");
    for (const std::string& path : test::everythingBelow(home)) {
        if (path.ends_with("/skipped")) std::filesystem::resize_file(path, limit);
    }
    for (const auto& [name, more] : sizes) std::filesystem::resize_file(home.at(name), limit + more);
    test::ageEverything(home, 121);
    home.link("link", home.at("exact"));
    home.link("My", home.at("My.APPS"));
    ScanContext context = test::scanContext(home, {});
    const auto items = test::scan(largeOldFiles, context);
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].title, "deep");
    EXPECT_EQ(items[1].title, "entered");
    EXPECT_EQ(items[2].size, limit);

    context.isCancelled = [asked = 0]() mutable { return ++asked > 1; };
    EXPECT_THAT(test::found(largeOldFiles, context), ElementsAre("exact"));
}

// A folder on another volume, and every folder when the home is on a removable disk. The kernel's word on
// that is replaced for a disk of the test's own.
TEST(LargeOldFiles, StaysOnTheHomeVolumeIfThatIsInternal) {
    const test::TemporaryHome outside;
    const std::string image = outside.file("image", "");
    if (std::system(("truncate -s 16M " + image + " && mkfs.ext4 -q " + image).c_str()) != 0)
        GTEST_SKIP() << "needs mkfs.ext4";
    const test::Mounted disk("-o loop " + image, outside.folder("disk"));
    const test::Mounted memory("-t tmpfs none", outside.folder("disk/memory"));
    if (!disk.done || !memory.done) GTEST_SKIP() << "needs root";
    ScanContext context = test::scanContext(outside);
    context.paths = Paths(disk.path);
    test::makeFiles(outside, "disk/{}", "top|folder/below|memory/elsewhere", 2 << 20);
    test::ageEverything(outside, 400);
    EXPECT_THAT(test::found(largeOldFiles, context), ElementsAre("below", "top"));

    const uint64_t device = linkStatus(disk.path)->device;
    const test::Mounted removable("--bind " + outside.file("removable", "1"),
                                  fmt::format("/sys/dev/block/{}:{}/removable", device >> 8, device & 0xFF));
    if (removable.done) EXPECT_THAT(test::found(largeOldFiles, context), ElementsAre("top"));
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
    for (const auto& [path, size, ageDays] : copies) test::age(home, home.fileOfSize(path, size), ageDays);
    home.link("Library/CloudStorage/Link", home.at("elsewhere"));
    home.link("Library/Mobile Documents/link", home.at("elsewhere/old"));
    ScanContext context = test::scanContext(home);
    const auto items = test::scan(cloudLocalCopies, context);
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].id, "evict:" + home.at("Library/CloudStorage/OneDrive-Me/larger"));
    EXPECT_EQ(items[0].reason, "OneDrive: stays in the cloud, re-downloads when opened");
    EXPECT_EQ(items[1].id, "evict:" + home.at("Library/Mobile Documents/deep/er/old"));
    context.isCancelled = [] { return true; };
    EXPECT_THAT(test::scan(cloudLocalCopies, context), IsEmpty());
}
