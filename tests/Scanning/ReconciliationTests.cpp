#include "CleanerCore/Safety/SafetyPolicy.h"
#include "CleanerCore/Scanning/ScanEngine.h"

#include <gmock/gmock.h>

using namespace loftmere;
using testing::ElementsAre;
using enum CleanCategory;

namespace {

ScanItem item(ItemTarget target, int64_t size = 0) {
    return ScanItem::make({.target = std::move(target), .size = size, .reason = ""});
}

// What came out, one line a category: "logs: id id".
std::vector<std::string> outcome(std::vector<CategoryResult> results) {
    const SafetyPolicy policy(Paths("/nowhere/u"), {});
    std::vector<std::string> lines;
    for (const CategoryResult& result : ScanEngine::dedupe(std::move(results), policy)) {
        std::string line = rawValue(result.category) + std::string(":");
        for (const ScanItem& kept : result.items) line += " " + kept.id;
        lines.push_back(line + (result.error ? " !" + *result.error : ""));
    }
    return lines;
}

const ItemTarget a = PathTarget{"/nowhere/u/a"};
const ItemTarget ab = PathTarget{"/nowhere/u/a/b"};
const ItemTarget abc = PathTarget{"/nowhere/u/a/b/c"};
const ItemTarget admin = AdminPathTarget{"/Library/Caches/x"};
const ItemTarget adminBelow = PathTarget{"/Library/Caches/x/y"};
const ItemTarget composedName = PathTarget{"/nowhere/u/caf\xC3\xA9"};
const ItemTarget belowDecomposed = PathTarget{"/nowhere/u/cafe\xCC\x81/x"};

} // namespace

TEST(Reconciliation, OwnersByRankAndOrder) {
    EXPECT_THAT(outcome({{duplicates, {item(a)}}, {oldDownloads, {item(a)}}}),
                ElementsAre("oldDownloads:", "duplicates: /nowhere/u/a"));
    EXPECT_THAT(outcome({{oldDownloads, {item(a)}}, {duplicates, {item(a)}}}),
                ElementsAre("oldDownloads:", "duplicates: /nowhere/u/a"));
    EXPECT_THAT(outcome({{logs, {item(a)}}, {userCaches, {item(a)}}}),
                ElementsAre("userCaches:", "logs: /nowhere/u/a"));
    EXPECT_THAT(outcome({{docker, {item(a), item(a)}}, {appBundle, {}, "No way"}}),
                ElementsAre("docker: /nowhere/u/a /nowhere/u/a", "appBundle: !No way"));
}

TEST(Reconciliation, FoldersHideWhatLiesBelow) {
    const ItemTarget evict = EvictTarget{"/nowhere/u/a/b/c"};
    const ItemTarget command = CommandTarget{{"tool", {}}};
    EXPECT_THAT(outcome({{logs, {item(abc), item(evict), item(command)}}, {xcode, {item(ab)}}}),
                ElementsAre("logs: evict:/nowhere/u/a/b/c cmd:tool", "xcode: /nowhere/u/a/b"));
    EXPECT_THAT(outcome({{logs, {item(a), item(abc)}}}), ElementsAre("logs: /nowhere/u/a"));
    EXPECT_THAT(outcome({{logs, {item(adminBelow), item(admin)}}}), ElementsAre("logs: /Library/Caches/x"));
    EXPECT_THAT(outcome({{logs, {item(belowDecomposed), item(composedName)}}}),
                ElementsAre("logs: /nowhere/u/caf\xC3\xA9"));
    // The path that lost still hides, and so does one that is blocked.
    EXPECT_THAT(outcome({{logs, {item(a), item(abc)}}, {xcode, {item(a)}}}),
                ElementsAre("logs:", "xcode: /nowhere/u/a"));
    EXPECT_THAT(outcome({{logs, {item(PathTarget{"/nowhere/u/Documents"})}},
                         {xcode, {item(PathTarget{"/nowhere/u/Documents/x"})}},
                         {docker, {item(PathTarget{"/"}), item(PathTarget{"/srv/x"})}}}),
                ElementsAre("logs:", "xcode:", "docker:"));
}

TEST(Reconciliation, SortsStably) {
    const auto named = [](const char* name, int64_t size) {
        return item(PathTarget{std::string("/nowhere/u/") + name}, size);
    };
    EXPECT_THAT(
        outcome({{trash, {named("s", 1), named("m1", 5), named("l", 9), named("m2", 5)}}, {logs, {}}}),
        ElementsAre("logs:", "trash: /nowhere/u/l /nowhere/u/m1 /nowhere/u/m2 /nowhere/u/s"));
}
