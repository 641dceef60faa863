#include "CleanerCore/Scanning/ScanEngine.h"
#include "tests/Support/ScannerFixtures.h"
#include "tests/Support/ScriptedScanner.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Support/Waiting.h"

#include <gmock/gmock.h>

#include <atomic>
#include <mutex>
#include <thread>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;
using enum CleanCategory;

using Findings = Result<std::vector<ScanItem>>;

TEST(ScanEngineThreaded, AFailureCostsOnlyItsCategory) {
    const test::TemporaryHome home;
    const auto oneLog = [](const ScanContext& context) -> Findings {
        return std::vector{ScanItem::make({.target = PathTarget{context.lib("Logs/a")}, .category = logs})};
    };
    const auto scanners =
        test::scripted({{trash, [](auto&) { return failed(Failure::saying("The disk has gone")); }},
                        {docker, [](auto&) -> Findings { throw std::bad_alloc(); }},
                        {logs, oneLog}})({trash, docker, logs});
    std::mutex lock;
    std::set<CleanCategory> finished;
    const auto results = ScanEngine(home.paths(), {}).scan(scanners, nullptr, [&](CleanCategory category) {
        const std::lock_guard guard(lock);
        finished.insert(category);
    });
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].items.size(), 1U);
    EXPECT_EQ(results[0].error, std::nullopt);
    EXPECT_THAT(results[1].items, IsEmpty());
    EXPECT_EQ(results[1].error, "The disk has gone");
    EXPECT_EQ(results[2].error, "There was not enough memory");
    EXPECT_THAT(finished, ElementsAre(logs, trash, docker));
}

TEST(ScanEngineThreaded, FindsWhatIsRegisteredButNothingProtected) {
    const test::TemporaryHome home;
    for (const char* name : {"keep/a", "go/a"}) home.file(std::string(".Trash/") + name, "x");
    const auto titles = [&](std::vector<std::string> protectedPaths) {
        const AppConfig config{.protectedPaths = std::move(protectedPaths)};
        return test::titlesOf(ScanEngine(home.paths(), config).scan({trash, appBundle}).at(0).items);
    };
    EXPECT_THAT(titles({}), ElementsAre("go", "keep"));
    EXPECT_THAT(titles({"~/.Trash/keep"}), ElementsAre("go"));
}

TEST(ScanEngineThreaded, ScannersRunSideBySide) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one processor runs one scanner at a time";
    const test::TemporaryHome home;
    std::atomic<int> arrived = 0;
    std::atomic<int> met = 0;
    const auto meet = [&](const ScanContext&) -> Findings {
        ++arrived;
        met += test::comesTrue([&] { return arrived == 2; }) ? 1 : 0;
        return std::vector<ScanItem>{};
    };
    const auto scanners = test::scripted({{trash, meet}, {logs, meet}})({trash, logs});
    ScanEngine(home.paths(), {}).scan(scanners);
    EXPECT_EQ(met, 2);
}

TEST(ScanEngineThreaded, StatusIsThinnedOverAllScannersTogether) {
    const test::TemporaryHome home;
    const auto chatter = [](const ScanContext& context) -> Findings {
        const Date end = addSeconds(currentDate(), 0.25);
        while (currentDate() < end) context.report(logs, "/some/path");
        return std::vector<ScanItem>{};
    };
    const auto scanners = test::scripted({{trash, chatter}, {logs, chatter}})({trash, logs});
    std::mutex lock;
    std::vector<Date> told;
    ScanEngine(home.paths(), {}).scan(scanners, nullptr, nullptr, [&](CleanCategory, const std::string&) {
        const std::lock_guard guard(lock);
        told.push_back(currentDate());
    });
    ASSERT_GE(told.size(), 2U);
    // Only whole intervals of the run can have let one through, beside the first.
    EXPECT_LE(static_cast<double>(told.size()), 2.0 + secondsBetween(told.front(), told.back()) / 0.09);
}
