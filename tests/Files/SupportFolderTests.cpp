#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/FileContent.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace loftmere::test {

TEST(Paths, makesTheSupportFoldersAndSaysWhenItCannot) {
    const TemporaryHome home;
    const Paths paths(home.path() + "//./x/../");
    EXPECT_EQ(paths.home(), home.path());
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(paths.ensureSupportDirs());
        EXPECT_TRUE(FS::isDirectory(paths.quarantineDir()));
        EXPECT_TRUE(FS::isDirectory(paths.lib("Logs/Ostrel Loftmere")));
    }
    home.file("occupied/Library/Logs", "");
    const auto made = Paths(home.at("occupied")).ensureSupportDirs();
    ASSERT_FALSE(made);
    EXPECT_NE(made.error().message.find("Logs"), std::string::npos);
}

TEST(Paths, carriesAFormerInstallationOverOnce) {
    const TemporaryHome home;
    const Paths paths = home.paths();
    const std::string legacy = home.at("Library/Application Support/Fernhollow");
    home.file(legacy + "/config.json", "old");
    EXPECT_TRUE(paths.ensureSupportDirs());
    EXPECT_FALSE(FS::exists(legacy));
    EXPECT_EQ(readFile(paths.configFile()), "old");

    home.file(legacy + "/config.json", "older still");
    paths.migrateLegacySupportDir();
    EXPECT_EQ(readFile(paths.configFile()), "old");
    EXPECT_EQ(readFile(legacy + "/config.json"), "older still");
}

TEST(ConfigStore, ReadsOldNewAndBrokenFiles) {
    const std::vector<std::pair<std::string, AppConfig>> cases{
        {"{}", {}},
        {R"({"queueAdminRemovals": null, "quarantineEverything": null})", {}},
        {R"({"logAgeDays": "3", "staleProjectDays": 9})", {}},
        {R"({"logAgeDays": 3.5, "staleProjectDays": 9})", {}},
        {R"({"disposalOverrides": {"logs": "burn"}, "staleProjectDays": 9})", {}},
        {R"({"staleProjectDays": 9.0, "fromTheFuture": [1]})", {.staleProjectDays = 9}},
        {R"({"largeFileMinMB": 5000000000})", {.largeFileMinMB = 5'000'000'000}},
        {R"({"staleProjectDays": 9)", {}},
        {"[]", {}},
        {"", {}},
        {"{\"protectedPaths\": " + std::string(300'000, '['), {}},
    };
    const TemporaryHome home;
    const ConfigStore store(home.paths());
    EXPECT_EQ(store.load(), AppConfig{}) << "without a file";
    for (const auto& [text, expected] : cases) {
        home.file(home.paths().configFile(), text);
        EXPECT_EQ(store.load(), expected) << text;
        EXPECT_EQ(readFile(home.paths().configFile()).value_or("gone"), text) << "the file is left as it is";
    }
}

TEST(ConfigStore, SavesSortedAndPrettyAndReadsItBack) {
    const TemporaryHome home;
    const ConfigStore store(home.paths());
    const AppConfig config{.protectedPaths = {"~/Wörk"}, .minItemAgeHours = 0};
    ASSERT_TRUE(store.save(config));
    EXPECT_EQ(store.load(), config);
    EXPECT_TRUE(readFile(home.paths().configFile())->starts_with("{\n  \"developerRoots\": [],\n"));

    home.file("other/Library/Application Support", "a file where the folder should be");
    EXPECT_FALSE(ConfigStore(Paths(home.at("other"))).save(config));
}

} // namespace loftmere::test
