#include "CleanerCore/Scanning/Scanners/CrashReportsScanner.h"
#include "CleanerCore/Scanning/Scanners/LogsScanner.h"
#include "CleanerCore/Scanning/Scanners/MailDownloadsScanner.h"
#include "CleanerCore/Scanning/Scanners/SavedStateScanner.h"
#include "CleanerCore/Scanning/Scanners/UserCachesScanner.h"
#include "tests/Support/ScannerFixtures.h"

#include <gmock/gmock.h>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> found(const JunkScanner& scanner, const ScanContext& context) {
    return test::titlesOf(scanner.scan(context).value());
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
    EXPECT_THAT(found(UserCachesScanner(), test::scanContext(home)), ElementsAre("viewer"));
    EXPECT_THAT(found(UserCachesScanner(), test::scanContext(home, {.minItemAgeHours = 0})),
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
    EXPECT_THAT(found(CrashReportsScanner(), test::scanContext(home)), ElementsAre("x.ips"));
}

TEST(SystemJunk, UseNotChangeDecidesOnStateAndAttachments) {
    const test::TemporaryHome home;
    const std::string mail = "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/";
    for (const int days : {6, 8, 13, 15}) {
        const std::string name = std::to_string(days);
        home.setAgeDays(home.file("Library/Saved Application State/" + name, "x"), days);
        home.setAgeDays(home.file(mail + name, "x"), days);
    }
    EXPECT_THAT(found(SavedStateScanner(), test::scanContext(home)), ElementsAre("15"));
    EXPECT_THAT(found(MailDownloadsScanner(), test::scanContext(home)), ElementsAre("13", "15", "8"));
}

TEST(SystemJunk, ACancelledScanKeepsWhatItHas) {
    const test::TemporaryHome home;
    for (const char* name : {"a", "b", "c"}) home.fileOfSize(std::string("Library/Caches/") + name, 70000);
    test::ageEverything(home, 2);
    ScanContext context = test::scanContext(home);
    int asked = 0;
    context.isCancelled = [&] { return ++asked > 2; };
    EXPECT_EQ(UserCachesScanner().scan(context).value().size(), 2U);
    context.isCancelled = [] { return true; };
    EXPECT_THAT(UserCachesScanner().scan(context).value(), IsEmpty());
}
