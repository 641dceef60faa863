#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Scanners/ListingAhead.h"
#include "CleanerCore/Scanning/Scanners/ProjectArtifacts.h"
#include "CleanerCore/Support/PathText.h"
#include "tests/Support/ScannerFixtures.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int64_t enough = 1048576;

// A project of this kind below "Projects" with an artifact that is large enough.
void project(const test::TemporaryHome& home, const std::string& name, const std::string& marker,
             const std::string& artifact, int64_t size = enough) {
    if (!marker.empty()) home.file("Projects/" + name + "/" + marker, "x");
    home.fileOfSize("Projects/" + name + "/" + artifact + "/data", size);
}

std::vector<std::string> found(const test::TemporaryHome& home, AppConfig config = {}) {
    return test::found(CleanCategory::projectArtifacts, test::scanContext(home, std::move(config)));
}

} // namespace

TEST(ProjectArtifacts, AMarkerProvesTheProject) {
    const test::TemporaryHome home;
    const std::string folders = "node_modules|.next|.nuxt|.turbo|.parcel-cache|.svelte-kit|target|.build|"
                                "Pods|.gradle|.venv|venv|.tox";
    test::makeFiles(home, "Projects/all/{}",
                    "package.json|Cargo.toml|Package.swift|Podfile|settings.gradle|tox.ini|"
                    ".venv/pyvenv.cfg|venv/pyvenv.cfg");
    test::makeFiles(home, "Projects/all/{}/data", folders, enough);
    test::makeFiles(home, "Projects/none/{}/data", "main.c|" + folders, enough);
    project(home, "kotlin", "settings.gradle.kts", ".gradle");
    project(home, "small", "Cargo.toml", "target", enough - 4096);
    project(home, "undated", "venv/pyvenv.cfg", "venv"); // holds nothing but the artifact
    project(home, "none/node_modules/below", "package.json", "node_modules");
    project(home, "beside", "pyvenv.cfg", ".venv");
    for (const char* closed : {".git", "Library", ".Trash", "Applications", "Pictures", "Music", "Movies",
                               ".cache", ".npm", ".cargo", ".rustup", "vendor", "My.app"}) {
        project(home, std::string(closed) + "/inner", "package.json", "node_modules");
    }
    project(home, "My.APP/entered", "package.json", "node_modules");
    home.file("Projects/linked/package.json", "{}");
    home.link("Projects/linked/node_modules", home.at("Projects/all/node_modules"));
    test::ageEverything(home, 100.5);
    EXPECT_THAT(found(home), ElementsAre("all/.build", "all/.gradle", "all/.next", "all/.nuxt",
                                         "all/.parcel-cache", "all/.svelte-kit", "all/.tox", "all/.turbo",
                                         "all/.venv", "all/Pods", "all/node_modules", "all/target",
                                         "all/venv", "entered/node_modules", "kotlin/.gradle"));
    const auto lines = test::linesOf(test::scan(CleanCategory::projectArtifacts, test::scanContext(home)));
    EXPECT_THAT(lines, testing::Contains(
                           "all/target | safe | all untouched for 100 days. Restore with: cargo build"));
    EXPECT_EQ(lines.size(), 12U); // three folders are restored in one way, two in another
}

TEST(ProjectArtifacts, ActivityIsTheProjectsOwnWork) {
    const std::pair<const char*, bool> cases[]{{"package.json", false},    {"src/main.js", false},
                                               {"src/deep/main.js", true}, {"node_modules/data", true},
                                               {".git/index", false},      {".git/HEAD", false},
                                               {".git/FETCH_HEAD", false}, {".git/config", true}};
    for (const auto& [changed, stale] : cases) {
        const test::TemporaryHome home;
        project(home, "app", "package.json", "node_modules");
        test::makeFiles(home, "Projects/app/{}",
                        "src/main.js|src/deep/main.js|.git/index|.git/HEAD|.git/FETCH_HEAD|.git/config");
        test::ageEverything(home, 60);
        test::age(home, std::string("Projects/app/") + changed, 1);
        EXPECT_EQ(found(home).empty(), !stale) << changed;
    }
}

TEST(ProjectArtifacts, DepthAndRoots) {
    const test::TemporaryHome home;
    const std::string seven = "1/2/3/4/5/6/7";
    project(home, seven, "package.json", "node_modules");
    project(home, seven + "/8", "package.json", "node_modules");
    home.folder("other");
    home.link("Code", home.at("Projects"));
    test::ageEverything(home, 60);
    EXPECT_THAT(found(home), ElementsAre("7/node_modules"));
    EXPECT_THAT(found(home, {.developerRoots = {"~/missing"}}), IsEmpty());
    EXPECT_THAT(found(home, {.developerRoots = {"~/Projects/1", "~/Projects//1/2/.."}}),
                ElementsAre("7/node_modules", "8/node_modules"));
    const AppConfig config{.developerRoots = {"~/other", "~/Code", home.at("other") + "/"}};
    EXPECT_THAT(ProjectArtifacts::roots(test::scanContext(home, config)), ElementsAre(home.at("other")));
    test::makeFiles(
        home, "{}/x",
        "Developer|projects|code|src|dev|Dev|repos|Repos|git|GitHub|github|Sites|workspace|Workspace|"
        "Documents/GitHub|Documents/Projects|Documents/Code|Documents/Developer|Desktop");
    EXPECT_EQ(ProjectArtifacts::roots(test::scanContext(home, {})).size(), 20U); // all but the link
}

TEST(ProjectArtifacts, ActivityLooksAtTwoHundredEntriesOfAFolder) {
    const test::TemporaryHome home;
    for (int i = 0; i < 300; ++i) home.file("p/src/" + std::to_string(i), "x");
    test::ageEverything(home, 60);
    int reached = 0;
    for (int i = 0; i < 300; ++i) {
        test::age(home, "p/src/" + std::to_string(i), 1);
        const auto activity = ProjectArtifacts::projectActivity(home.at("p"), {});
        if (*activity > test::scanContext(home).daysAgo(2)) ++reached;
        test::age(home, "p/src/" + std::to_string(i), 60);
    }
    EXPECT_EQ(reached, 200);
    EXPECT_EQ(ProjectArtifacts::projectActivity(home.at("missing"), {}), std::nullopt);
}

TEST(ListingAheadThreaded, KeepsTheOrderOfAWalkThatListsOneFolderAfterTheOther) {
    const test::TemporaryHome home;
    for (int i = 0; i < 400; ++i) home.file(fmt::format("{}/{}/{}/file", i % 7, i % 50, i), "");
    std::vector<std::string> expected;
    for (std::vector<std::string> pending{home.path()}; !pending.empty();) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        for (const DirectoryEntry& entry : FS::entries(folder)) {
            expected.push_back(joinPath(folder, entry.name));
            if (entry.type == FileType::directory) pending.push_back(expected.back());
        }
    }
    const auto isWhole = [](const DirectoryEntry&, int) { return true; };
    const auto goesOn = [] { return false; };
    std::vector<std::string> seen;
    ListingAhead ahead({home.path()}, isWhole, goesOn);
    while (const auto folder = ahead.next()) {
        for (const DirectoryEntry& entry : folder->entries)
            seen.push_back(joinPath(folder->path, entry.name));
    }
    EXPECT_EQ(seen, expected);

    ListingAhead abandoned(expected, isWhole, goesOn); // in the middle of what is listed
    EXPECT_EQ(abandoned.next()->path, expected.back());
    std::atomic<int> left = 200;
    ListingAhead cancelled(expected, isWhole, [&] { return --left < 0; });
    size_t handedOut = 0;
    while (cancelled.next()) ++handedOut;
    EXPECT_LE(handedOut, 200U);
}
