#include "CleanerCore/Safety/RemovalPermit.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace loftmere;
namespace fs = std::filesystem;

namespace {

constexpr const char* support = "Library/Application Support/Ostrel Loftmere";
constexpr const char* settings = "Library/Application Support/Ostrel Loftmere/config.json";

void lock(const std::string& path) {
    fs::permissions(path, fs::perms::none);
}

} // namespace

TEST(RemovalPermit, IsRefusedWhileTheSettingsAreThereAndCannotBeRead) {
    struct Case {
        const char* what;
        std::function<void(const test::TemporaryHome&)> prepare;
        bool isGiven;
    };
    const Case cases[]{
        {"no support folder", [](const auto&) {}, true},
        {"no settings yet", [](const auto& home) { home.folder(support); }, true},
        {"a file where the folders should be", [](const auto& home) { home.file("Library", ""); }, true},
        {"settings of the default", [](const auto& home) { home.file(settings, "{}"); }, true},
        {"behind a link", [](const auto& home) { home.link(settings, home.file("mine.json", "{}")); }, true},
        {"in a linked folder that has none", [](const auto& home) { home.link(support, home.folder("s")); },
         true},
        {"cut off", [](const auto& home) { home.file(settings, R"({"protectedPaths": [)"); }, false},
        {"of a wrong type", [](const auto& home) { home.file(settings, R"({"protectedPaths": 1})"); }, false},
        {"empty", [](const auto& home) { home.file(settings, ""); }, false},
        {"a folder", [](const auto& home) { home.folder(settings); }, false},
        {"not for this user", [](const auto& home) { lock(home.file(settings, "{}")); }, false},
        {"in another's folder", [](const auto& home) { lock(home.folder(support)); }, false},
        {"on an offline volume", [](const auto& home) { home.link(settings, "/Volumes/Off/config.json"); },
         false},
        {"in a folder on one", [](const auto& home) { home.link(support, "/Volumes/Off"); }, false},
        {"far up on one", [](const auto& home) { home.link("Library", "/Volumes/Off/Library"); }, false},
        {"in a circle of links", [](const auto& home) { home.link(support, "Ostrel Loftmere"); }, false},
    };
    for (const Case& c : cases) {
        const test::TemporaryHome home;
        c.prepare(home);
        const test::OrdinaryUser user({home.path()});
        const auto permit = RemovalPermit::ask(home.paths(), {});
        EXPECT_EQ(permit.has_value(), c.isGiven) << c.what;
        const std::string sentence = "the settings in " + home.at(settings) +
                                     " cannot be read; what you protect there is not known until they are "
                                     "mended or removed";
        if (!permit) EXPECT_EQ(permit.error().message, sentence);
    }
}

TEST(RemovalPermit, ProtectsWhatEitherCopyOfTheSettingsNames) {
    const test::TemporaryHome home;
    home.file(settings, R"({"protectedPaths": ["~/both", "~/disk"]})");
    const auto permit = RemovalPermit::ask(home.paths(), {.protectedPaths = {"~/own", "~/both"}});
    ASSERT_TRUE(permit);
    for (const char* name : {"own", "both", "disk", "neither"}) {
        const bool isCleared = permit->judge(home.at(name)).item.has_value();
        EXPECT_EQ(isCleared, std::string(name) == "neither") << name;
        EXPECT_EQ(permit->clearForRoot(home.at(name)).has_value(), isCleared) << name;
    }
}

TEST(RemovalPermit, ClearsWhatThePolicyAllows) {
    const test::TemporaryHome home;
    home.link("Work", home.folder("Library/CloudStorage/Box-me"));
    home.link("out", "/usr");
    const auto permit = RemovalPermit::ask(home.paths(), {});
    ASSERT_TRUE(permit);
    const auto inCloud = permit->judge(home.path() + "/Work//a/").item;
    ASSERT_TRUE(inCloud);
    EXPECT_EQ(inCloud->path(), home.at("Work/a"));
    EXPECT_EQ(inCloud->place().realPath(), home.at("Library/CloudStorage/Box-me/a"));
    EXPECT_EQ(inCloud->provider(), "Box");
    EXPECT_EQ(permit->judge("~/out").item->provider(), std::nullopt);

    for (const char* path : {"~/out/lib", "~/.ssh/id", "~/Work", "~/missing/x", "/Library/Caches/x", "x"})
        EXPECT_EQ(permit->judge(path).item.has_value(), std::string(path) == "~/Work") << path;
    EXPECT_EQ(permit->judge("~/missing/x").item.error().code, ENOENT);
    EXPECT_EQ(permit->clearForRoot("/Library/Caches//x/")->path(), "/Library/Caches/x");
    EXPECT_EQ(permit->clearForRoot("/usr/x").error().reason, "System location");
}
