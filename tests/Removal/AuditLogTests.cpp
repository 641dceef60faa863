#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

using namespace loftmere;
using test::TemporaryHome;

namespace {

constexpr const char* logFile = "Library/Application Support/Ostrel Loftmere/audit.jsonl";

AuditEntry entry(const std::string& action, int64_t size, bool success = true) {
    return {.id = "ID",
            .date = *fromISO8601("2026-01-15T09:30:12Z"),
            .action = action,
            .target = "/a \"quoted\"/é\n",
            .size = size,
            .category = CleanCategory::logs,
            .trigger = ScheduleTrigger{"weekly"},
            .success = success,
            .message = std::nullopt};
}

std::string actionsOf(const std::vector<AuditEntry>& entries) {
    std::string all;
    for (const AuditEntry& each : entries) all += each.action;
    return all;
}

} // namespace

TEST(AuditLog, TellsTheNewestFirst) {
    const TemporaryHome home;
    AuditLog log(home.paths());
    EXPECT_EQ(actionsOf(log.recent(5)), "");
    log.append({});
    EXPECT_FALSE(readFile(home.at(logFile)));
    log.append({entry("A", 1), entry("B", 2)});
    log.append({entry("\xff", 3), entry("C", 3)}); // the first cannot be written
    const std::pair<size_t, const char*> cases[]{{0, ""}, {1, "C"}, {2, "CB"}, {3, "CBA"}, {SIZE_MAX, "CBA"}};
    for (const auto& [limit, actions] : cases) EXPECT_EQ(actionsOf(log.recent(limit)), actions);
    EXPECT_EQ(log.recent(1)[0], entry("C", 3));
    std::ofstream(home.at(logFile), std::ios::app) << "{garbage}\n\n\n";
    EXPECT_EQ(actionsOf(log.recent(2)), "C");
    std::ofstream(home.at(logFile), std::ios::app) << R"({"action":"torn)"; // a crash in the middle of a line
    log.append({entry("D", 4)});
    EXPECT_EQ(actionsOf(log.recent(3)), "D") << "the torn and the garbage line count";
    EXPECT_EQ(actionsOf(log.recent(9)), "DCBA");
    const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
    std::ofstream(home.at(logFile), std::ios::app) << R"({"trigger":{"manual":)" << deep << "}}\n";
    EXPECT_EQ(actionsOf(log.recent(9)), "DCBA");
}

TEST(AuditLog, GrowsWhereALinkLeads) {
    const TemporaryHome home;
    home.link(logFile, home.folder("elsewhere") + "/log");
    AuditLog(home.paths()).append({entry("A", 1)});
    EXPECT_EQ(actionsOf(AuditLog(home.paths()).recent(5)), "A");
    EXPECT_TRUE(readFile(home.at("elsewhere/log")));
}

TEST(AuditLog, ReadsOverBlocks) {
    const TemporaryHome home;
    AuditLog log(home.paths());
    std::vector<AuditEntry> many;
    for (int i = 0; i < 3000; ++i) {
        many.push_back(entry("delete", i));
        many.back().target = std::string(static_cast<size_t>(i), 'x');
    }
    log.append(many);
    const auto all = log.recent(2500);
    ASSERT_EQ(all.size(), 2500);
    EXPECT_EQ(all.front().size, 2999);
    EXPECT_EQ(all.back(), many[500]);
    EXPECT_EQ(log.lifetimeFreed(), 2999 * 3000 / 2);
}

TEST(AuditLog, ReadsALineThatWasWrittenLongAgo) {
    const auto read = AuditEntry::ofLine(
        R"({"action":"trash","category":"oldDownloads","date":"2026-01-15T09:30:12Z","id":"7F3A","message":)"
        R"("why","size":41,"success":true,"target":"/a","trigger":{"uninstall":{"appName":"Chess"}}})");
    const AuditEntry expected{.id = "7F3A",
                              .date = *fromISO8601("2026-01-15T09:30:12Z"),
                              .action = "trash",
                              .target = "/a",
                              .size = 41,
                              .category = CleanCategory::oldDownloads,
                              .trigger = UninstallTrigger{"Chess"},
                              .success = true,
                              .message = "why"};
    EXPECT_EQ(read, expected);
}

TEST(AuditLog, CountsTheSameQuicklyAsSlowly) {
    AuditEntry bare = entry("trash", 7);
    bare.category = std::nullopt;
    bare.message = "note";
    bare.target = "/plain";
    bare.trigger = ManualTrigger{};
    std::vector<std::string> lines{"", "x", "{}"};
    for (const AuditEntry& each :
         {entry("delete", 5), entry("delete", 5, false), entry("quarantine", 5), entry("purge", -5), bare}) {
        lines.push_back(*writeJson(JsonCodec<AuditEntry>::encode(each), JsonStyle::compact));
    }
    // Every line with each of its bytes replaced by each of these, left out, or all after it cut off.
    int64_t counted = 0;
    for (const std::string& line : lines) {
        for (size_t at = 0; at <= line.size(); ++at) {
            std::vector<std::string> variants{
                line.substr(0, at), line.substr(0, at) + line.substr(std::min(at + 1, line.size()))};
            for (const char c : {'"', '\\', '0', '-', '}', ' ', '\x01', '\xff', ','}) {
                variants.push_back(line);
                if (at < line.size()) variants.back()[at] = c;
            }
            for (const std::string& variant : variants) {
                const auto slow = AuditEntry::ofLine(variant);
                const bool counts = slow && slow->success && slow->action != "quarantine";
                const bool known = counts && (slow->action == "delete" || slow->action == "trash" ||
                                              slow->action == "purge");
                EXPECT_EQ(freedBytesOf(variant), known ? slow->size : 0) << variant;
                counted += known;
            }
        }
    }
    EXPECT_GT(counted, 500);
}
