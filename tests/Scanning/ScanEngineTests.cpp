#include "CleanerCore/Scanning/ScanEngine.h"
#include "CleanerCore/Scanning/Throttle.h"
#include "tests/Support/ScannerFixtures.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A scanner that does what the test says.
class TestScanner : public JunkScanner {
public:
    using Body = std::function<Result<std::vector<ScanItem>>(const ScanContext&)>;
    TestScanner(CleanCategory category, Body body) : category_(category), body_(std::move(body)) {}
    CleanCategory category() const override { return category_; }
    Result<std::vector<ScanItem>> scan(const ScanContext& context) const override { return body_(context); }

private:
    CleanCategory category_;
    Body body_;
};

Result<std::vector<ScanItem>> oneLog(const ScanContext& context) {
    return std::vector{ScanItem::make({.target = PathTarget{context.lib("Logs/a")},
                                       .size = 1,
                                       .category = CleanCategory::logs,
                                       .reason = "old"})};
}

} // namespace

TEST(ScanEngine, AFailureCostsOnlyItsCategory) {
    const test::TemporaryHome home;
    ScannerRegistry::Scanners scanners;
    scanners.push_back(std::make_unique<TestScanner>(
        CleanCategory::trash, [](auto&) { return failed(Failure::saying("The disk has gone")); }));
    scanners.push_back(std::make_unique<TestScanner>(
        CleanCategory::docker, [](auto&) -> Result<std::vector<ScanItem>> { throw std::bad_alloc(); }));
    scanners.push_back(std::make_unique<TestScanner>(CleanCategory::logs, oneLog));
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
    EXPECT_THAT(finished, ElementsAre(CleanCategory::logs, CleanCategory::trash, CleanCategory::docker));
}

TEST(ScanEngine, NoScannerNoResult) {
    const test::TemporaryHome home;
    const ScanEngine engine(home.paths(), {});
    EXPECT_THAT(engine.scan(std::set<CleanCategory>{}), IsEmpty());
    EXPECT_THAT(engine.scan({CleanCategory::appBundle, CleanCategory::appLeftovers}), IsEmpty());
    const auto empty = engine.scan({CleanCategory::trash, CleanCategory::appBundle});
    ASSERT_EQ(empty.size(), 1U);
    EXPECT_EQ(empty[0], CategoryResult{.category = CleanCategory::trash});
}

TEST(ScanEngine, ScannersRunSideBySide) {
    if (std::thread::hardware_concurrency() < 2) GTEST_SKIP() << "one processor runs one scanner at a time";
    const test::TemporaryHome home;
    std::atomic<int> arrived = 0;
    std::atomic<int> met = 0;
    const auto meet = [&](const ScanContext&) -> Result<std::vector<ScanItem>> {
        ++arrived;
        for (int i = 0; i < 5000 && arrived < 2; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        met += arrived == 2 ? 1 : 0;
        return std::vector<ScanItem>{};
    };
    ScannerRegistry::Scanners scanners;
    scanners.push_back(std::make_unique<TestScanner>(CleanCategory::trash, meet));
    scanners.push_back(std::make_unique<TestScanner>(CleanCategory::logs, meet));
    ScanEngine(home.paths(), {}).scan(scanners);
    EXPECT_EQ(met, 2);
}

TEST(ScanEngine, StatusIsThinnedOverAllScannersTogether) {
    const test::TemporaryHome home;
    const auto chatter = [](const ScanContext& context) -> Result<std::vector<ScanItem>> {
        const Date end = addSeconds(currentDate(), 0.25);
        while (currentDate() < end) context.report(CleanCategory::logs, "/some/path");
        return std::vector<ScanItem>{};
    };
    ScannerRegistry::Scanners scanners;
    scanners.push_back(std::make_unique<TestScanner>(CleanCategory::trash, chatter));
    scanners.push_back(std::make_unique<TestScanner>(CleanCategory::logs, chatter));
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

TEST(ScannerRegistry, OneScannerACategoryAndTheOrderIsKept) {
    std::set<CleanCategory> seen;
    for (const auto& scanner : ScannerRegistry::all()) EXPECT_TRUE(seen.insert(scanner->category()).second);
    const auto some = ScannerRegistry::scanners({CleanCategory::mailDownloads, CleanCategory::logs});
    ASSERT_EQ(some.size(), 2U);
    EXPECT_EQ(some[0]->category(), CleanCategory::logs);
}
