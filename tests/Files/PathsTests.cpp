#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

namespace loftmere::test {

TEST(Paths, everyLocationFollowsTheHome) {
    const Paths paths("/users//me/./x/../");
    const std::string support = "/users/me/Library/Application Support/Ostrel Loftmere";
    for (const auto& [location, expected] : {
             std::pair{paths.home(), std::string("/users/me")},
             {paths.library(), "/users/me/Library"},
             {paths.lib("Caches/a"), "/users/me/Library/Caches/a"},
             {paths.supportDir(), support},
             {paths.quarantineDir(), support + "/Quarantine"},
             {paths.configFile(), support + "/config.json"},
             {paths.rulesFile(), support + "/rules.json"},
             {paths.lockFile(), support + "/agent.lock"},
             {paths.auditFile(), support + "/audit.jsonl"},
             {paths.agentLogFile(), "/users/me/Library/Logs/Ostrel Loftmere/agent.log"},
             {paths.launchAgentPlist(), "/users/me/Library/LaunchAgents/com.ostrel.loftmere.agent.plist"},
         }) {
        EXPECT_EQ(location, expected);
    }
}

TEST(Paths, makesTheSupportFoldersAndSaysWhenItCannot) {
    const TemporaryHome home;
    const Paths paths = home.paths();
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

} // namespace loftmere::test
