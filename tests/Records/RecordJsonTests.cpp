#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Records/TriggerSource.h"
#include "CleanerCore/Support/RecordCodec.h"

#include <gtest/gtest.h>

using namespace loftmere;

namespace {

template <class T> std::optional<T> decoded(const std::string& text) {
    const auto json = parseJson(text);
    return json ? JsonCodec<T>::decode(*json) : std::nullopt;
}

template <class T> std::string encoded(const T& value) {
    return writeJson(JsonCodec<T>::encode(value), JsonStyle::compact).value_or("failed");
}

constexpr const char* itemText =
    R"({"category":"docker","id":"kept as stored","lastUsed":"2026-03-01T09:30:00Z","reason":"r","risk":2,"size":5,)"
    R"("target":{"command":{"_0":{"arguments":["a","b c"],"executable":"docker"}}},"title":"t"})";

} // namespace

TEST(RecordJson, ScanItemKeepsItsShapeAndItsStoredId) {
    const auto item = decoded<ScanItem>(itemText);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->id, "kept as stored");
    EXPECT_EQ(item->risk, Risk::caution);
    EXPECT_EQ(encoded(*item), itemText);

    // Each key but lastUsed is required, none may have the wrong type.
    const Json whole = *parseJson(itemText);
    for (const auto& [key, value] : whole.items()) {
        Json changed = whole;
        changed.erase(key);
        EXPECT_EQ(JsonCodec<ScanItem>::decode(changed).has_value(), key == "lastUsed") << key;
        changed[key] = Json::array();
        EXPECT_FALSE(JsonCodec<ScanItem>::decode(changed)) << key;
    }
    for (const auto& [key, bad] : {std::pair<const char*, Json>{"risk", 3},
                                   {"category", "Docker"},
                                   {"size", 1.5},
                                   {"lastUsed", "2026-03-01T09:30:00.5Z"}}) {
        Json changed = whole;
        changed[key] = bad;
        EXPECT_FALSE(JsonCodec<ScanItem>::decode(changed)) << key;
    }
}

TEST(RecordJson, EnumerationsWithPayloadHaveExactlyOneKnownKey) {
    for (const std::string good :
         {R"({"path":{"_0":"/a"}})", R"({"adminPath":{"_0":"/a"}})", R"({"evict":{"_0":"/a"}})"}) {
        const auto target = decoded<ItemTarget>(good);
        ASSERT_TRUE(target) << good;
        EXPECT_EQ(encoded(*target), good);
    }
    for (const std::string bad :
         {R"({})", R"({"path":"/a"})", R"({"path":{"1":"/a"}})", R"({"way":{"_0":"/a"}})",
          R"({"path":{"_0":"/a"},"evict":{"_0":"/a"}})", R"("path")", R"({"command":{"_0":"x"}})"}) {
        EXPECT_FALSE(decoded<ItemTarget>(bad)) << bad;
    }
    for (const TriggerSource& trigger :
         std::vector<TriggerSource>{ManualTrigger{}, ScheduleTrigger{"Nightly"}, UninstallTrigger{"Foo"}}) {
        EXPECT_EQ(decoded<TriggerSource>(encoded(trigger)), trigger);
    }
    EXPECT_EQ(encoded(TriggerSource(ManualTrigger{})), R"({"manual":{}})");
    EXPECT_EQ(encoded(TriggerSource(ScheduleTrigger{"N"})), R"({"schedule":{"ruleName":"N"}})");
    EXPECT_FALSE(decoded<TriggerSource>(R"({"schedule":{"appName":"N"}})"));
}

TEST(RecordJson, ReportLeavesOutAnAbsentSession) {
    CleanReport report{.freedBytes = 1, .failures = {{"id", "why"}}};
    EXPECT_EQ(encoded(report).find("quarantineSessionID"), std::string::npos);
    EXPECT_EQ(decoded<CleanReport>(encoded(report)), report);
    report.quarantineSessionID = "20260115-093012-7F3A9C";
    EXPECT_EQ(decoded<CleanReport>(encoded(report)), report);
    EXPECT_FALSE(decoded<CleanReport>(R"({"freedBytes": 1})"));
}

TEST(ScanItem, IdentityComesFromTheTarget) {
    const CommandSpec prune{"docker", {"builder", "prune", "-f"}};
    const ScanItem command = ScanItem::make({.target = CommandTarget{prune}});
    EXPECT_EQ(command.id, "cmd:docker builder prune -f");
    EXPECT_EQ(command.title, "docker builder prune -f");
    EXPECT_EQ(command.anyPath(), nullptr);
    const ScanItem evict = ScanItem::make({.target = EvictTarget{"/h/a.mov"}});
    EXPECT_EQ(evict.id, "evict:/h/a.mov");
    EXPECT_EQ(evict.title, "a.mov");
    EXPECT_EQ(evict.path(), nullptr);
    EXPECT_EQ(*evict.anyPath(), "/h/a.mov");
    const ScanItem admin = ScanItem::make({.title = "T", .target = AdminPathTarget{"/Library/x"}});
    EXPECT_EQ(admin.id, "/Library/x");
    EXPECT_EQ(admin.title, "T");
    EXPECT_EQ(*admin.path(), "/Library/x");
}

TEST(CleanCategory, TheTableStandsInDeclaredOrder) {
    ASSERT_EQ(allCategories().size(), 23U);
    for (const CategoryTraits& row : allCategories()) {
        EXPECT_EQ(&traits(row.category), &row) << row.rawValue;
        EXPECT_EQ(categoryNamed(row.rawValue), row.category);
        EXPECT_EQ(row.isRegenerable != row.selectedByDefault, row.category == CleanCategory::trash)
            << row.rawValue;
    }
    EXPECT_FALSE(categoryNamed("UserCaches"));
}
