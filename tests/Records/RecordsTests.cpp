#include "CleanerCore/Files/ConfigStore.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

using namespace loftmere;

TEST(ConfigStore, MissingAndBrokenFilesGiveDefaults) {
    const test::TemporaryHome home;
    const ConfigStore store(home.paths());
    EXPECT_EQ(store.load(), AppConfig{});
    home.file("Library/Application Support/Ostrel Loftmere/config.json",
              R"({"logAgeDays": "3", "staleProjectDays": 9})");
    EXPECT_EQ(store.load(), AppConfig{});
    home.file("Library/Application Support/Ostrel Loftmere/config.json",
              R"({"queueAdminRemovals": null, "staleProjectDays": 9})");
    EXPECT_EQ(store.load(), AppConfig{.staleProjectDays = 9});
}
