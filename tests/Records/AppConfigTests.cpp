#include "CleanerCore/Files/ConfigStore.h"
#include "CleanerCore/Platform/FileContent.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

using namespace loftmere;
using enum CleanCategory;

namespace {

constexpr const char* configFile = "Library/Application Support/Ostrel Loftmere/config.json";

struct FileCase {
    const char* text;
    AppConfig expected;
};

} // namespace

TEST(ConfigStore, ReadsOldNewAndBrokenFiles) {
    const std::vector<FileCase> cases{
        {"{}", {}},
        {R"({"queueAdminRemovals": null, "quarantineEverything": null})", {}},
        {R"({"logAgeDays": "3", "staleProjectDays": 9})", {}},
        {R"({"logAgeDays": 3.5})", {}},
        {R"({"logAgeDays": true})", {}},
        {R"({"disposalOverrides": {"logs": "burn"}, "staleProjectDays": 9})", {}},
        {R"({"staleProjectDays": 9, "fromTheFuture": [1]})", {.staleProjectDays = 9}},
        {R"({"staleProjectDays": 9.0})", {.staleProjectDays = 9}},
        {R"({"largeFileMinMB": 5000000000})", {.largeFileMinMB = 5'000'000'000}},
        {R"({"staleProjectDays": 9)", {}},
        {"[]", {}},
        {"", {}},
    };
    const test::TemporaryHome home;
    const ConfigStore store(home.paths());
    EXPECT_EQ(store.load(), AppConfig{}) << "without a file";
    for (const FileCase& each : cases) {
        home.file(configFile, each.text);
        EXPECT_EQ(store.load(), each.expected) << each.text;
        EXPECT_EQ(readFile(home.at(configFile)).value_or("gone"), each.text) << "the file is left as it is";
    }
}

TEST(ConfigStore, SavesSortedAndPrettyAndReadsItBack) {
    const test::TemporaryHome home;
    const ConfigStore store(home.paths());
    const AppConfig config{.quarantineEverything = true,
                           .disposalOverrides = {{"logs", Disposal::trash}},
                           .protectedPaths = {"~/Wörk"},
                           .minItemAgeHours = 0};
    ASSERT_TRUE(store.save(config));
    EXPECT_EQ(store.load(), config);
    const std::string text = readFile(home.at(configFile)).value_or("");
    EXPECT_TRUE(text.starts_with("{\n  \"developerRoots\": [],\n")) << text;
    EXPECT_NE(text.find("\"logs\": \"trash\""), std::string::npos) << text;

    const test::TemporaryHome blocked;
    blocked.file("Library/Application Support", "a file where the folder should be");
    EXPECT_FALSE(ConfigStore(blocked.paths()).save(config));
}

TEST(AppConfig, DecidesTheDisposal) {
    AppConfig config{.quarantineEverything = true};
    EXPECT_EQ(config.disposal(userCaches), Disposal::quarantine);
    EXPECT_EQ(config.disposal(trash), Disposal::remove);
    EXPECT_EQ(config.disposal(docker), Disposal::remove);
    EXPECT_EQ(config.disposal(cloudLocalCopies), Disposal::quarantine);
    config.disposalOverrides = {{"docker", Disposal::quarantine},
                                {"logs", Disposal::trash},
                                {"securityThreats", Disposal::remove},
                                {"trash", Disposal::quarantine}};
    EXPECT_EQ(config.disposal(docker), Disposal::remove);
    EXPECT_EQ(config.disposal(logs), Disposal::trash);
    EXPECT_EQ(config.disposal(securityThreats), Disposal::remove);
    EXPECT_EQ(config.disposal(trash), Disposal::quarantine);
    const AppConfig plain;
    EXPECT_EQ(plain.disposal(cloudLocalCopies), Disposal::remove);
    EXPECT_EQ(plain.disposal(appBundle), Disposal::quarantine);
    EXPECT_EQ(plain.disposal(oldDownloads), Disposal::quarantine);
}
