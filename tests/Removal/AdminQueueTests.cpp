#include "CleanerCore/Removal/Administrator/AdminQueue.h"
#include "CleanerCore/Removal/Administrator/AdminRunner.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "tests/Support/TemporaryHome.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>

namespace loftmere::test {

namespace fs = std::filesystem;
using testing::ElementsAre;

namespace {

ScanItem itemOf(ItemTarget target, int64_t size = 10) {
    return ScanItem::make({.target = std::move(target), .size = size, .category = CleanCategory::logs});
}

std::vector<std::string> titles(const std::vector<ScanItem>& items) {
    std::vector<std::string> texts;
    for (const ScanItem& item : items) texts.push_back(item.title);
    return texts;
}

} // namespace

TEST(AdminQueueTests, HoldsEachItemOnce) {
    AdminQueue queue([](const auto&) { return Shell::Result{}; });
    const ScanItem a = itemOf(AdminPathTarget{"/Library/Caches/a"});
    const ScanItem b = itemOf(AdminPathTarget{"/Library/Caches/b"}, 5);
    queue.enqueue({a});
    queue.enqueue({a, b, b}); // only what was there before the call counts
    EXPECT_THAT(titles(queue.pending()), ElementsAre("a", "b", "b"));
    EXPECT_EQ(queue.pendingBytes(), 20);
    queue.clear();
    EXPECT_TRUE(queue.pending().empty());
}

TEST(AdminQueueTests, RemovesInOneGoAndTellsTheOutcome) {
    const TemporaryHome home;
    const std::string gone = home.file("Library/Caches/gone", "x");
    const std::string stays = home.file("Library/Caches/stays", "x");
    const std::string evicted = home.file("Library/Caches/evicted", "x");
    const std::string guarded = home.file("Library/Caches/mine/guarded", "x");
    std::vector<std::vector<std::string>> requests;
    AdminQueue queue([&](const std::vector<ClearedPath>& paths) {
        requests.emplace_back();
        for (const ClearedPath& path : paths) requests.back().push_back(path.path());
        fs::remove(gone);
        fs::remove(evicted);
        return Shell::Result{.status = 1, .out = "", .err = "rm: Resource busy"};
    });
    queue.enqueue({itemOf(AdminPathTarget{gone}, 3), itemOf(CommandTarget{{"docker", {"prune"}}}),
                   itemOf(PathTarget{stays}, 40), itemOf(AdminPathTarget{guarded}),
                   itemOf(AdminPathTarget{home.at("Library/Caches/vanished")}),
                   itemOf(EvictTarget{evicted}, 500)});
    AppConfig config;
    config.protectedPaths = {home.at("Library/Caches/mine")};
    const AdminQueue::Outcome outcome = queue.flush(home.paths(), config);

    EXPECT_THAT(requests, ElementsAre(ElementsAre(gone, stays, evicted)));
    EXPECT_THAT(titles(outcome.removed), ElementsAre("gone", "evicted"));
    EXPECT_EQ(outcome.freed, 503);
    ASSERT_EQ(outcome.failed.size(), 1);
    EXPECT_EQ(outcome.failed[0].first.title, "stays");
    EXPECT_EQ(outcome.failed[0].second, "File is in use — quit the app and retry");
    EXPECT_TRUE(queue.pending().empty()) << "the failed one too";

    std::vector<std::string> logged;
    for (const AuditEntry& e : AuditLog(home.paths()).recent(10)) {
        EXPECT_EQ(e.category, CleanCategory::logs);
        logged.push_back(fmt::format("{} {} {} {} {}", e.action, e.target, e.size, e.success, *e.message));
    }
    EXPECT_THAT(logged, ElementsAre("delete " + evicted + " 500 true admin batch",
                                    "delete " + stays + " 40 false admin batch failed",
                                    "delete " + gone + " 3 true admin batch"));

    queue.enqueue({itemOf(AdminPathTarget{gone})});
    EXPECT_TRUE(queue.flush(home.paths(), config).removed.empty());
    EXPECT_EQ(requests.size(), 1) << "what has vanished costs no prompt";
    EXPECT_TRUE(queue.pending().empty());
}

TEST(AdminQueueTests, TellsWhyAPathStillStands) {
    const std::string start(159, 'x');
    const struct {
        std::string out, err, sentence;
    } rows[] = {
        {"", "execution error: User canceled. (-128)", "You cancelled the password prompt"},
        {"User Cancelled", "in use", "You cancelled the password prompt"},
        {"", "rm: x: Operation Not Permitted",
         "macOS blocks this path (System Integrity Protection or Full Disk Access missing)"},
        {"resource busy", "", "File is in use — quit the app and retry"},
        {"", "Read-only file system", "Read-only volume"},
        {"odd", "", "Still present after removal (/a/b)"},
        {"", start + "é" + std::string(40, 'y'), start + "é"},
    };
    for (const auto& [out, err, sentence] : rows)
        EXPECT_EQ(AdminRunner::explain({.status = 1, .out = out, .err = err}, "/a/b"), sentence);
}

} // namespace loftmere::test
