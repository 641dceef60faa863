#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/ScannerFixtures.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <thread>

// What every scanner of the registry promises, whatever it looks for.

using namespace loftmere;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

namespace {

// One line for each item below the home: all that a scan must leave as it is.
std::vector<std::string> snapshot(const test::TemporaryHome& home) {
    const auto ticks = [](Date date) { return date.time_since_epoch().count(); };
    std::vector<std::string> lines;
    for (const std::string& path : test::everythingBelow(home)) {
        const FileStatus status = *linkStatus(path);
        lines.push_back(fmt::format("{} {} {} {} {} {} {} {}", path, status.size, status.allocated,
                                    status.inode, status.mode, ticks(status.modified), ticks(status.accessed),
                                    ticks(status.statusChanged)));
    }
    std::ranges::sort(lines);
    return lines;
}

int64_t totalSize(const std::vector<ScanItem>& items) {
    return std::accumulate(items.begin(), items.end(), int64_t{0},
                           [](int64_t sum, const ScanItem& item) { return sum + item.size; });
}

class ScannerContractThreaded : public testing::TestWithParam<CleanCategory> {
protected:
    void SetUp() override {
        ASSERT_NE(fixture_, nullptr) << "tests/Support/ScannerFixtures.cpp lacks a fixture";
        ::setenv("LC_ALL", "C", 1);
        ::setenv("TZ", "UTC", 1);
        fixture_->fill(home_);
        home_.folder("Empty");
    }

    // Puts copies of the folder that the scanner measures beside it, and many small files, all names of one,
    // into it.
    void fillMeasuredFolder() {
        const fs::path measured = fs::path(home_.at(fixture_->files[0].path)).parent_path();
        for (int i = 0; i < 50; ++i) {
            fs::copy(measured,
                     measured.parent_path() / (std::to_string(i) + "-" + measured.filename().string()),
                     fs::copy_options::recursive);
        }
        const std::string bulk = measured.string() + "/bulk/";
        const std::string first = home_.fileOfSize(bulk + "0", 4096);
        for (int i = 1; i < 4000; ++i) fs::create_hard_link(first, home_.at(bulk + std::to_string(i)));
    }

    static std::vector<ScanItem> scan(const ScanContext& context) { return test::scan(GetParam(), context); }

    std::vector<std::string> found(AppConfig config = {.largeFileMinMB = 1}) {
        return test::linesOf(scan(test::scanContext(home_, std::move(config))));
    }

    const test::TemporaryHome home_;
    const test::ScannerFixture* fixture_ = test::scannerFixture(GetParam());
};

std::vector<CleanCategory> registered() {
    std::vector<CleanCategory> categories;
    for (const auto& scanner : ScannerRegistry::all()) categories.push_back(scanner->category());
    return categories;
}

INSTANTIATE_TEST_SUITE_P(All, ScannerContractThreaded, testing::ValuesIn(registered()),
                         [](const auto& info) { return std::string(rawValue(info.param)); });

// What may befall an item while it is being looked at.
void upset(const std::string& path, int kind, const std::string& elsewhere) {
    std::error_code ignored;
    if (kind == 3) return fs::permissions(path, fs::perms::none, ignored);
    fs::rename(path, elsewhere + "/" + std::to_string(std::hash<std::string>()(path)), ignored);
    if (kind == 1) fs::create_directory(path, ignored);
    if (kind == 2) fs::create_symlink(elsewhere, path, ignored);
}

} // namespace

TEST(ScannerRegistry, HasTheOrderOfTheSections) {
    using enum CleanCategory;
    EXPECT_THAT(registered(), ElementsAre(userCaches, logs, crashReports, trash, savedAppState, mailDownloads,
                                          xcode, simulators, projectArtifacts, packageCaches, docker,
                                          iosBackups, iosUpdates, oldDownloads, installers, largeOldFiles,
                                          duplicates, similarPhotos, cloudLocalCopies));
    EXPECT_TRUE(ScannerRegistry::scanners({appBundle}).empty());
}

TEST_P(ScannerContractThreaded, FindsReportsAndNeverWrites) {
    test::ageEverything(home_, 400, 390);
    const auto before = snapshot(home_);
    ScanContext context = test::scanContext(home_);
    std::vector<std::string> reports;
    std::mutex lock;
    context.report = [&](CleanCategory category, const std::string& text) {
        const std::lock_guard guard(lock);
        EXPECT_EQ(category, GetParam());
        reports.push_back(text);
    };
    const auto items = scan(context);
    EXPECT_EQ(snapshot(home_), before);
    EXPECT_EQ(test::linesOf(items), fixture_->findings);
    EXPECT_EQ(!reports.empty(), fixture_->reports);
    for (const ScanItem& item : items) {
        EXPECT_EQ(item.category, GetParam());
        EXPECT_GT(item.size, 0);
        EXPECT_EQ(item.lastUsed, context.daysAgo(GetParam() == CleanCategory::trash ? 400 : 390));
    }
}

TEST_P(ScannerContractThreaded, GoesByTheRightDate) {
    test::ageEverything(home_, 400, 2);
    if (fixture_->goesByUse)
        EXPECT_THAT(found(), IsEmpty());
    else
        EXPECT_EQ(found(), fixture_->findings);
    test::ageEverything(home_, 400, 390);
    EXPECT_EQ(found({.largeFileMinMB = 1, .minItemAgeHours = 400 * 24}), fixture_->findings);
    const auto fresh = found({.largeFileMinMB = 1, .minItemAgeHours = 400 * 24 + 1});
    EXPECT_EQ(fresh, fixture_->sparesFresh ? std::vector<std::string>{} : fixture_->findings);
}

// The fixtures were changed 400 days ago and used 390 days ago. Each setting lets them pass at the one value
// and nothing, or less, at the other.
TEST(ScannerSettings, EachDecides) {
    using enum CleanCategory;
    const struct {
        CleanCategory category;
        int64_t AppConfig::* setting;
        int64_t passing;
        int64_t strict;
        const char* reason; // with the passing value
        size_t left = 0;
    } cases[]{
        {logs, &AppConfig::logAgeDays, 399, 400, "Log files untouched for 399+ days"},
        {projectArtifacts, &AppConfig::staleProjectDays, 399, 400, "viewer untouched for 400 days"},
        {oldDownloads, &AppConfig::oldDownloadsDays, 389, 390, "Not opened in 389+ days"},
        {xcode, &AppConfig::xcodeArchiveAgeDays, 399, 400, "Archive older than 399 days.", 3},
        {largeOldFiles, &AppConfig::largeFileAgeDays, 389, 390, "MB file not opened since"},
        {largeOldFiles, &AppConfig::largeFileMinMB, 1, 2, "1 MB file", 1},
    };
    for (const auto& [category, setting, passing, strict, reason, left] : cases) {
        const test::TemporaryHome home;
        test::scannerFixture(category)->fill(home);
        test::ageEverything(home, 400, 390);
        AppConfig config{.largeFileMinMB = 1};
        config.*setting = passing;
        const auto lines = test::linesOf(test::scan(category, test::scanContext(home, config)));
        EXPECT_EQ(lines.size(), test::scannerFixture(category)->findings.size()) << reason;
        EXPECT_THAT(lines, Contains(HasSubstr(reason)));
        config.*setting = strict;
        EXPECT_EQ(test::scan(category, test::scanContext(home, config)).size(), left) << reason;
    }
}

TEST_P(ScannerContractThreaded, NeighboursMakeNoDifference) {
    for (const test::ScannerFixture& fixture : test::scannerFixtures()) fixture.fill(home_);
    test::ageEverything(home_, 400, 390);
    EXPECT_EQ(found(), fixture_->findings);
}

TEST_P(ScannerContractThreaded, StopsSoonAfterCancel) {
    if (fixture_->measures) fillMeasuredFolder();
    test::ageEverything(home_, 400);
    ScanContext context = test::scanContext(home_);
    const int64_t whole = totalSize(scan(context));
    std::atomic<bool> cancelled = false;
    context.isCancelled = [&] { return !fixture_->reports || cancelled; };
    std::atomic<int> reports = 0;
    context.report = [&](CleanCategory, const std::string&) { ++reports, cancelled = true; };
    const auto begin = std::chrono::steady_clock::now();
    const int64_t partial = totalSize(scan(context));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
    EXPECT_LT(reports, 10); // one for each unit of work in hand and each stage, not for all units
    if (fixture_->measures) EXPECT_LT(partial, whole);
}

TEST_P(ScannerContractThreaded, SurvivesUnreadableFolders) {
    test::ageEverything(home_, 400);
    const test::OrdinaryUser user({home_.path()});
    const size_t found = scan(test::scanContext(home_)).size();
    for (const std::string& path : test::everythingBelow(home_)) {
        const fs::perms usual = fs::symlink_status(path).permissions();
        fs::permissions(path, fs::perms::none);
        EXPECT_LE(scan(test::scanContext(home_)).size(), found) << path;
        fs::permissions(path, usual);
    }
}

TEST_P(ScannerContractThreaded, SurvivesWhatChangesUnderItsEyes) {
    const test::TemporaryHome elsewhere;
    elsewhere.fileOfSize("big", 3 << 20);
    for (int kind = 0; kind < 4; ++kind) {
        const test::TemporaryHome home;
        fixture_->fill(home);
        test::ageEverything(home, 400);
        const test::OrdinaryUser user({home.path(), elsewhere.path()});
        ScanContext context = test::scanContext(home);
        context.report = [&](CleanCategory, const std::string& path) {
            if (path != home.path() && path.starts_with(home.path())) upset(path, kind, elsewhere.path());
        };
        for (const ScanItem& item : scan(context)) {
            EXPECT_FALSE(item.path() != nullptr && FS::isSymlink(*item.path())) << *item.path();
        }
    }
}

TEST_P(ScannerContractThreaded, SurvivesARestlessHome) {
    test::ageEverything(home_, 400);
    const test::TemporaryHome elsewhere;
    const std::vector<std::string> paths = test::everythingBelow(home_);
    std::atomic<bool> done = false;
    std::thread restless([&] {
        for (size_t i = 0; !done; ++i) {
            const std::string& path = paths[i % paths.size()];
            std::error_code ignored;
            fs::rename(path, elsewhere.at("aside"), ignored);
            upset(path, static_cast<int>(1 + i % 2), elsewhere.path());
            fs::remove(path, ignored);
            fs::rename(elsewhere.at("aside"), path, ignored);
        }
    });
    for (int i = 0; i < 30; ++i) scan(test::scanContext(home_));
    done = true;
    restless.join();
}
