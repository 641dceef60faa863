#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
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

// What the columns say together, so that no row departs from it unnoticed.
TEST(CleanCategory, TheTableHoldsTogether) {
    const std::map<CategoryGroup, int> ranks{{CategoryGroup::system, 1},    {CategoryGroup::personal, 2},
                                             {CategoryGroup::developer, 3}, {CategoryGroup::clutter, 4},
                                             {CategoryGroup::cloud, 4},     {CategoryGroup::security, 5},
                                             {CategoryGroup::apps, 5}};
    for (const CategoryTraits& row : tableOf<CleanCategory>) {
        const bool isJunk = row.group == CategoryGroup::system || row.group == CategoryGroup::developer;
        EXPECT_EQ(row.isJunk, isJunk) << row.rawValue;
        EXPECT_EQ(row.selectedByDefault, isJunk) << row.rawValue;
        EXPECT_EQ(row.isRegenerable, isJunk && row.value != CleanCategory::trash) << row.rawValue;
        EXPECT_EQ(row.ownerRank, ranks.at(row.group)) << row.rawValue;
        EXPECT_EQ(row.defaultDisposal == Disposal::remove, isJunk || row.group == CategoryGroup::cloud)
            << row.rawValue;
    }
}

TEST(AppConfig, DecidesTheDisposal) {
    AppConfig config{.quarantineEverything = true};
    EXPECT_EQ(config.disposal(CleanCategory::userCaches), Disposal::quarantine);
    EXPECT_EQ(config.disposal(CleanCategory::trash), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::docker), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::cloudLocalCopies), Disposal::quarantine);
    config.disposalOverrides = {{"docker", Disposal::quarantine},
                                {"logs", Disposal::trash},
                                {"securityThreats", Disposal::remove},
                                {"trash", Disposal::quarantine}};
    EXPECT_EQ(config.disposal(CleanCategory::docker), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::logs), Disposal::trash);
    EXPECT_EQ(config.disposal(CleanCategory::securityThreats), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::trash), Disposal::quarantine);
    const AppConfig plain;
    EXPECT_EQ(plain.disposal(CleanCategory::cloudLocalCopies), Disposal::remove);
    EXPECT_EQ(plain.disposal(CleanCategory::appBundle), Disposal::quarantine);
    EXPECT_EQ(plain.disposal(CleanCategory::oldDownloads), Disposal::quarantine);
}
