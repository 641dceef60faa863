#include "CleanerCore/Scanning/Scanners/DockerScanner.h"
#include "CleanerCore/Scanning/Scanners/PackageCachesScanner.h"
#include "CleanerCore/Scanning/Scanners/SimulatorScanner.h"
#include "CleanerCore/Scanning/Scanners/XcodeScanner.h"
#include "tests/Support/ScannerFixtures.h"
#include "tests/Support/ScriptedTools.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* xcodeFolder = "Library/Developer/Xcode/";

// Answers that are no list of simulators and no account of Docker's.
constexpr const char* rubbish[] = {"",
                                   "not JSON",
                                   "[]",
                                   R"({"devices": []})",
                                   R"({"devices": {"a": [1, {"udid": 2}, {}], "b": {}}})",
                                   R"({"Type": "Images", "Reclaimable": 5})",
                                   "\xff\xfe{}"};

// Whatever else a tool does instead of answering, its scanner finds nothing and does not wait for long.
template <class Scanner> void expectNothingOfOtherAnswers(const std::string& tool, const std::string& good) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    const ScanContext context = test::scanContext(home);
    tools.addPrinting(tool, good);
    EXPECT_EQ(Scanner().scan(context).value().size(), 1U);
    for (const char* text : rubbish) {
        tools.addPrinting(tool, text);
        EXPECT_THAT(Scanner().scan(context).value(), IsEmpty()) << text;
    }
    tools.addPrinting(tool, good, 72);
    EXPECT_THAT(Scanner().scan(context).value(), IsEmpty());
    tools.add(tool, "echo '" + good + "'; exec sleep 60");
    EXPECT_THAT(Scanner(0.2).scan(context).value(), IsEmpty());
    tools.remove(tool);
    EXPECT_THAT(Scanner().scan(context).value(), IsEmpty());
}

} // namespace

TEST(Xcode, WhatComesBackAndWhatDoesNot) {
    const test::TemporaryHome home;
    const std::string base = xcodeFolder;
    for (const char* name :
         {"DerivedData/App-x/o", "DerivedData/Fresh/o", "Products/App/o", "UserData/Previews/o",
          "Archives/2025/Old.xcarchive/o", "Archives/2025/New.xcarchive/o", "Archives/2025/Note.txt",
          "Archives/Loose.xcarchive/o"}) {
        home.file(base + name, "x");
    }
    home.link(base + "Archives/Linked", home.at(base + "Archives/2025"));
    test::ageEverything(home, 181);
    home.setAgeDays(base + "Archives/2025/New.xcarchive", 179);
    home.setAgeDays(base + "DerivedData/Fresh", 0.5 / 24);
    const auto items = XcodeScanner().scan(test::scanContext(home)).value();
    EXPECT_THAT(test::titlesOf(items),
                ElementsAre("App-x", "Old.xcarchive", "Xcode Products", "Xcode UserData/Previews"));
    EXPECT_EQ(items.back().risk, Risk::caution);
    EXPECT_EQ(items.back().reason,
              "Archive older than 180 days. Needed only to symbolicate old crash reports.");
}

TEST(Simulators, TheNewestSymbolsStay) {
    test::ScriptedTools tools;
    tools.remove("xcrun");
    const test::TemporaryHome home;
    const std::string base = xcodeFolder;
    for (const char* name :
         {"iOS DeviceSupport/9.3/s", "iOS DeviceSupport/17.2/s", "iOS DeviceSupport/16.4/s",
          "iOS DeviceSupport/99.txt", "watchOS DeviceSupport/10.0/s"}) {
        home.file(base + name, "x");
    }
    home.link(base + "watchOS DeviceSupport/99.0", home.at(base + "iOS DeviceSupport/9.3"));
    home.file("Library/Developer/CoreSimulator/Caches/dyld", "x");
    test::ageEverything(home, 2);
    EXPECT_THAT(test::found(SimulatorScanner(), test::scanContext(home)),
                ElementsAre("16.4", "9.3", "Simulator caches"));
}

TEST(Simulators, UnavailableOnesAreTheToolsBusiness) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    home.fileOfSize("Library/Developer/CoreSimulator/Devices/A/data", 9000);
    home.fileOfSize("Library/Developer/CoreSimulator/Devices/B/data", 9000);
    const ScanContext context = test::scanContext(home);
    tools.addPrinting("xcrun",
                      R"({"devices": {"iOS 15": [{"udid": "A"}, {"udid": "B"}], "tvOS": [{"udid": "C"}]}})");
    const auto items = SimulatorScanner().scan(context).value();
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0].title, "3 unavailable simulator(s)");
    EXPECT_EQ(items[0].id, "cmd:xcrun simctl delete unavailable");
    EXPECT_EQ(items[0].size, 2 * 12288);
    ASSERT_THAT(tools.calls("xcrun"),
                ElementsAre(ElementsAre("simctl", "list", "devices", "unavailable", "-j")));
    tools.addPrinting("xcrun", R"({"devices": {"": [{"udid": "A"}, {"udid": "A"}, {"udid": ""}, {"udid": "."},
        {"udid": ".."}, {"udid": "../.."}, {"udid": "..\u0000"}, {"udid": "A/data"}]}})");
    EXPECT_EQ(SimulatorScanner().scan(context).value().at(0).size, 12288);
}

TEST(PackageCaches, ByTableSizeAndRisk) {
    const test::TemporaryHome home;
    home.fileOfSize("Library/Caches/Homebrew/bottle", 1048576);
    home.fileOfSize(".cache/huggingface/model", 1048576);
    home.fileOfSize(".npm/_cacache/small", 1044480);
    home.fileOfSize(".expo/fresh", 1048576);
    home.fileOfSize("go/pkg/mod/cache/other", 1048576);
    test::ageEverything(home, 2);
    home.setAgeDays(".expo", 0.01);
    ScanContext context = test::scanContext(home);
    const auto items = PackageCachesScanner().scan(context).value();
    ASSERT_THAT(test::titlesOf(items), ElementsAre("Homebrew downloads", "Hugging Face models/datasets"));
    EXPECT_EQ(items[0].reason, "Re-downloaded on demand by the tool");
    EXPECT_EQ(items[1].reason, "Re-downloadable, but may be large to fetch again");
    EXPECT_EQ(items[1].risk, Risk::caution);
    int asked = 0;
    context.isCancelled = [&] { return ++asked > 12; }; // Homebrew stands at 12
    EXPECT_THAT(test::found(PackageCachesScanner(), context), ElementsAre("Homebrew downloads"));
}

TEST(Docker, OffersWhatDockerSaysItCanReclaim) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    const ScanContext context = test::scanContext(home);
    tools.addPrinting("docker", R"J({"Type": "Images", "Reclaimable": "1.5GB (50%)"}
{"Type": "Containers", "Reclaimable": "0B"}
broken

{"Type": "Local Volumes", "Reclaimable": "512kB (100%)"}
{"Type": "Build Cache", "Reclaimable": "3MB"}
)J");
    const auto items = DockerScanner().scan(context).value();
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(items[0].id, "cmd:docker builder prune -f");
    EXPECT_EQ(items[1].id, "cmd:docker image prune -a -f");
    EXPECT_EQ(items[1].size, 1500000000);
    EXPECT_EQ(items[2].id, "cmd:docker volume prune -f");
    EXPECT_EQ(items[2].risk, Risk::caution);
    EXPECT_THAT(tools.calls("docker"), ElementsAre(ElementsAre("system", "df", "--format", "{{json .}}")));
}

TEST(OutsideTools, FindNothingWhenTheyDoNotAnswer) {
    expectNothingOfOtherAnswers<SimulatorScanner>("xcrun", R"({"devices": {"a": [{"udid": "A"}]}})");
    expectNothingOfOtherAnswers<DockerScanner>("docker", R"({"Type": "Images", "Reclaimable": "1GB"})");
}

TEST(OutsideTools, AreNotWaitedForAfterCancel) {
    test::ScriptedTools tools;
    for (const char* name : {"docker", "xcrun"}) tools.add(name, "trap '' TERM; sleep 60 & wait; wait");
    const test::TemporaryHome home;
    ScanContext context = test::scanContext(home);
    std::chrono::steady_clock::time_point cancelledAt;
    context.isCancelled = [&, asked = 0]() mutable {
        if (++asked == 3) cancelledAt = std::chrono::steady_clock::now();
        return asked >= 3;
    };
    ScanContext again = context;
    EXPECT_THAT(DockerScanner().scan(context).value(), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - cancelledAt, std::chrono::seconds(1));
    EXPECT_THAT(SimulatorScanner().scan(again).value(), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - cancelledAt, std::chrono::seconds(1));
}

TEST(Docker, ParsesItsSizes) {
    using Case = std::pair<const char*, int64_t>;
    for (const auto& [text, bytes] :
         {Case{"1.5GB", 1500000000}, Case{"512kB (100%)", 512000}, Case{"512KB", 512000},
          Case{"3.2TB", 3200000000000}, Case{"-2MB", -2000000}, Case{"1.9B", 1}, Case{"1e3kB", 1000000}})
        EXPECT_EQ(DockerScanner::parseSize(text), bytes) << text;
    for (const char* nothing :
         {"0B", "12", "3.2TiB", "", "B", "GB", " 1GB", "1,5GB", "9e99TB", "nanB", "infB", "0x10B"})
        EXPECT_EQ(DockerScanner::parseSize(nothing), 0) << nothing;
}
