#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/ScannerFixtures.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <numeric>
#include <thread>

// What every scanner of the registry promises, whatever it looks for.

using namespace loftmere;
namespace fs = std::filesystem;

namespace {

// One line for each item below the home: all that a scan must leave as it is.
std::vector<std::string> snapshot(const test::TemporaryHome& home) {
    std::vector<std::string> lines;
    for (const std::string& path : test::everythingBelow(home)) {
        const FileStatus status = *linkStatus(path);
        std::string line = path;
        for (const int64_t part : {status.size, status.allocated, static_cast<int64_t>(status.inode),
                                   static_cast<int64_t>(status.mode)}) {
            line += " " + std::to_string(part);
        }
        for (const Date date : {status.modified, status.accessed, status.statusChanged}) {
            line += " " + std::to_string(date.time_since_epoch().count());
        }
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    return lines;
}

// The items as JSON, sorted, told without the place of the home.
std::vector<std::string> told(const std::vector<ScanItem>& items, const test::TemporaryHome& home) {
    std::vector<std::string> lines;
    for (const ScanItem& item : items) {
        std::string line = JsonCodec<ScanItem>::encode(item).dump();
        for (size_t at = line.find(home.path()); at != std::string::npos; at = line.find(home.path())) {
            line.replace(at, home.path().size(), "~");
        }
        lines.push_back(line);
    }
    std::ranges::sort(lines);
    return lines;
}

int64_t totalSize(const std::vector<ScanItem>& items) {
    return std::accumulate(items.begin(), items.end(), int64_t{0},
                           [](int64_t sum, const ScanItem& item) { return sum + item.size; });
}

class ScannerContract : public testing::TestWithParam<CleanCategory> {
protected:
    void SetUp() override {
        ASSERT_NE(fixture_, nullptr) << "tests/Support/ScannerFixtures.cpp lacks a fixture";
        fixture_->fill(home_);
        home_.folder("Empty");
    }

    static void SetUpTestSuite() {
        store_ = new test::TemporaryHome;
        for (int i = 0; i < 5000; ++i) store_->fileOfSize("bulk/" + std::to_string(i), 4096);
        test::ageEverything(*store_, 400);
    }
    static void TearDownTestSuite() { delete store_; }

    // Puts the many small files into a folder that the scanner measures.
    void fillMeasuredFolder() {
        fs::rename(store_->at("bulk"), home_.at(fixture_->measured) + "/bulk");
        home_.setAgeDays(fixture_->measured, 400);
    }
    void emptyMeasuredFolder() { fs::rename(home_.at(fixture_->measured) + "/bulk", store_->at("bulk")); }

    std::vector<ScanItem> scan(const ScanContext& context) {
        auto items = scanner_->scan(context);
        EXPECT_TRUE(items.has_value());
        return items.value_or(std::vector<ScanItem>{});
    }

    static inline test::TemporaryHome* store_ = nullptr; // holds "bulk", which takes long to make
    const test::TemporaryHome home_;
    const test::ScannerFixture* fixture_ = test::scannerFixture(GetParam());
    const std::unique_ptr<JunkScanner> scanner_ = std::move(ScannerRegistry::scanners({GetParam()}).front());
};

std::vector<CleanCategory> registered() {
    std::vector<CleanCategory> categories;
    for (const auto& scanner : ScannerRegistry::all()) categories.push_back(scanner->category());
    return categories;
}

INSTANTIATE_TEST_SUITE_P(All, ScannerContract, testing::ValuesIn(registered()),
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

TEST_P(ScannerContract, FindsReportsAndNeverWrites) {
    test::ageEverything(home_, 400);
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
    EXPECT_EQ(!items.empty(), fixture_->finds);
    EXPECT_EQ(!reports.empty(), fixture_->reports);
    for (const ScanItem& item : items) {
        EXPECT_EQ(item.category, GetParam());
        EXPECT_FALSE(item.reason.empty());
        EXPECT_GT(item.size, 0);
    }
}

TEST_P(ScannerContract, NeighboursMakeNoDifference) {
    const test::TemporaryHome all;
    for (const test::ScannerFixture& fixture : test::scannerFixtures()) fixture.fill(all);
    test::ageEverything(home_, 400);
    test::ageEverything(all, 400);
    auto alone = scan(test::scanContext(home_));
    auto together = scan(test::scanContext(all));
    for (auto* items : {&alone, &together}) {
        for (ScanItem& item : *items) item.lastUsed = std::nullopt; // the two homes were aged a moment apart
    }
    EXPECT_EQ(told(alone, home_), told(together, all));
}

TEST_P(ScannerContract, StopsSoonAfterCancel) {
    test::ageEverything(home_, 400);
    if (fixture_->measured != nullptr) fillMeasuredFolder();
    ScanContext context = test::scanContext(home_);
    const int64_t whole = totalSize(scan(context));
    std::atomic<bool> cancelled = false;
    context.isCancelled = [&] { return !fixture_->reports || cancelled; };
    context.report = [&](CleanCategory, const std::string&) { cancelled = true; };
    const auto begin = std::chrono::steady_clock::now();
    const int64_t partial = totalSize(scan(context));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    if (fixture_->measured == nullptr) return;
    EXPECT_LT(partial, whole);
    emptyMeasuredFolder();
}

TEST_P(ScannerContract, SurvivesUnreadableFolders) {
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

TEST_P(ScannerContract, SurvivesWhatChangesUnderItsEyes) {
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

TEST_P(ScannerContract, SurvivesARestlessHome) {
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
