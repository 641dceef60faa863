#include "CleanerCore/Records/AppConfig.h"
#include "CleanerCore/Records/CleanReport.h"
#include "CleanerCore/Records/ScanItem.h"
#include "CleanerCore/Support/RecordCodec.h"

#include <gtest/gtest.h>

#include <set>

using namespace loftmere;

namespace {

template <class T> std::optional<T> decoded(const std::string& text) {
    const auto json = parseJson(text);
    return json ? JsonCodec<T>::decode(*json) : std::nullopt;
}

template <class T> std::string encoded(const T& value) {
    return writeJson(JsonCodec<T>::encode(value), JsonStyle::compact).value_or("failed");
}

template <class T> void expectForm(const T& value, const std::string& text) {
    EXPECT_EQ(encoded(value), text);
    EXPECT_EQ(decoded<T>(text), value) << text;
}

// Each key but those named is required, and no value may have the wrong type.
template <class T> void expectStrict(const std::string& text, const std::set<std::string>& optional) {
    const Json whole = *parseJson(text);
    for (const auto& [key, value] : whole.items()) {
        Json changed = whole;
        changed.erase(key);
        EXPECT_EQ(JsonCodec<T>::decode(changed).has_value(), optional.contains(key)) << key;
        changed[key] = Json::object();
        EXPECT_FALSE(JsonCodec<T>::decode(changed)) << key;
    }
}

constexpr const char* itemText =
    R"({"category":"docker","id":"kept as stored","lastUsed":"2026-03-01T09:30:00Z","reason":"r","risk":2,"size":5,)"
    R"("target":{"command":{"_0":{"arguments":["a","b c"],"executable":"docker"}}},"title":"t"})";

constexpr const char* reportText =
    R"({"deferredAdmin":7,"evictedBytes":2,"failures":[{"itemID":"i","message":"m"}],"freedBytes":1,)"
    R"("itemsProcessed":5,"quarantineSessionID":"s","quarantinedBytes":3,"skippedProtected":["/p"],"trashedBytes":4})";

// Settings that nobody has changed, and settings that are all changed.
constexpr const char* defaultSettings =
    R"({"developerRoots":[],"disposalOverrides":{},"hasCompletedOnboarding":false,"largeFileAgeDays":120,)"
    R"("largeFileMinMB":500,"logAgeDays":3,"minItemAgeHours":1,"oldDownloadsDays":180,"protectedPaths":[],)"
    R"("quarantineEverything":false,"quarantineRetentionDays":7,"queueAdminRemovals":true,"staleProjectDays":30,)"
    R"("xcodeArchiveAgeDays":180})";
constexpr const char* changedSettings =
    R"({"developerRoots":["/d"],"disposalOverrides":{"logs":"trash"},"hasCompletedOnboarding":true,"largeFileAgeDays":15,)"
    R"("largeFileMinMB":14,"logAgeDays":17,"minItemAgeHours":18,"oldDownloadsDays":13,"protectedPaths":["/p"],)"
    R"("quarantineEverything":true,"quarantineRetentionDays":11,"queueAdminRemovals":false,"staleProjectDays":12,)"
    R"("xcodeArchiveAgeDays":16})";

} // namespace

TEST(RecordJson, EachKeyHoldsItsField) {
    using enum CleanCategory;
    const ItemTarget target = CommandTarget{{"docker", {"a", "b c"}}};
    const auto date = fromISO8601("2026-03-01T09:30:00Z");
    expectForm(ScanItem{"kept as stored", "t", target, 5, docker, Risk::caution, "r", date}, itemText);
    expectForm(CleanReport{1, 2, 3, 4, 5, {{"i", "m"}}, "s", {"/p"}, 7}, reportText);
    expectForm(std::vector{Risk::safe, Risk::review, Risk::caution}, "[0,1,2]");
    expectForm(std::vector{Disposal::quarantine, Disposal::trash, Disposal::remove},
               R"(["quarantine","trash","delete"])");
    expectForm(AppConfig{}, defaultSettings);
    const std::map<std::string, Disposal> overrides{{"logs", Disposal::trash}};
    expectForm(AppConfig{11, true, overrides, {"/p"}, {"/d"}, 12, 13, 14, 15, 16, 17, 18, true, false},
               changedSettings);
}

TEST(RecordJson, MissingAndWrongValuesAreRefused) {
    expectStrict<ScanItem>(itemText, {"lastUsed"});
    expectStrict<CleanReport>(reportText, {"quarantineSessionID"});
    expectStrict<CommandSpec>(R"({"arguments":[],"executable":"x"})", {});
    expectStrict<CleanFailure>(R"({"itemID":"i","message":"m"})", {});
    const Json whole = *parseJson(itemText);
    for (const auto& [key, bad] : {std::pair<const char*, Json>{"risk", 3},
                                   {"risk", "2"},
                                   {"category", "Docker"},
                                   {"size", 1.5},
                                   {"lastUsed", "2026-03-01T09:30:00.5Z"}}) {
        Json changed = whole;
        changed[key] = bad;
        EXPECT_FALSE(JsonCodec<ScanItem>::decode(changed)) << key;
    }
}

TEST(RecordJson, EnumerationsWithPayloadHaveExactlyOneKnownKey) {
    expectForm<ItemTarget>(PathTarget{"/a"}, R"({"path":{"_0":"/a"}})");
    expectForm<ItemTarget>(AdminPathTarget{"/a"}, R"({"adminPath":{"_0":"/a"}})");
    expectForm<ItemTarget>(EvictTarget{"/a"}, R"({"evict":{"_0":"/a"}})");
    for (const std::string bad :
         {R"({})", R"({"path":"/a"})", R"({"path":{"1":"/a"}})", R"({"way":{"_0":"/a"}})",
          R"({"path":{"_0":"/a"},"evict":{"_0":"/a"}})", R"("path")", R"({"command":{"_0":"x"}})"}) {
        EXPECT_FALSE(decoded<ItemTarget>(bad)) << bad;
    }
    expectForm<TriggerSource>(ManualTrigger{}, R"({"manual":{}})");
    expectForm<TriggerSource>(ScheduleTrigger{"N"}, R"({"schedule":{"ruleName":"N"}})");
    expectForm<TriggerSource>(UninstallTrigger{"A"}, R"({"uninstall":{"appName":"A"}})");
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
        EXPECT_EQ(row.defaultDisposal,
                  isJunk || row.group == CategoryGroup::cloud ? Disposal::remove : Disposal::quarantine)
            << row.rawValue;
    }
}

TEST(AppConfig, DecidesTheDisposal) {
    const AppConfig config{.quarantineEverything = true,
                           .disposalOverrides = {{"docker", Disposal::quarantine},
                                                 {"logs", Disposal::trash},
                                                 {"securityThreats", Disposal::remove},
                                                 {"trash", Disposal::quarantine}}};
    EXPECT_EQ(config.disposal(CleanCategory::docker), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::logs), Disposal::trash);
    EXPECT_EQ(config.disposal(CleanCategory::securityThreats), Disposal::remove);
    EXPECT_EQ(config.disposal(CleanCategory::trash), Disposal::quarantine);
    const AppConfig plain;
    using enum CleanCategory;
    for (const CategoryTraits& row : tableOf<CleanCategory>) {
        const bool resistsTheSwitch =
            row.value == trash || row.value == docker || row.value > cloudLocalCopies;
        const AppConfig all{.quarantineEverything = true};
        EXPECT_EQ(plain.disposal(row.value), row.defaultDisposal) << row.rawValue;
        EXPECT_EQ(all.disposal(row.value), resistsTheSwitch ? row.defaultDisposal : Disposal::quarantine);
    }
}
