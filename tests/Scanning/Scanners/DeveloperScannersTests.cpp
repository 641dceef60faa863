#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Scanning/Scanners/ForeignText.h"
#include "tests/Support/ScannerFixtures.h"
#include "tests/Support/ScriptedTools.h"

#include <gmock/gmock.h>

#include <chrono>
#include <map>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;
using enum CleanCategory;

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
void expectNothingOfOtherAnswers(ScannerRegistry::Scanner (*make)(double toolLimit), const std::string& tool,
                                 const std::string& good) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    const auto count = [&](double toolLimit) {
        return make(toolLimit)->scan(test::scanContext(home)).value().size();
    };
    tools.addPrinting(tool, good);
    EXPECT_EQ(count(60), 1U);
    for (const char* text : rubbish) {
        tools.addPrinting(tool, text);
        EXPECT_EQ(count(60), 0U) << text;
    }
    tools.addPrinting(tool, good, 72);
    EXPECT_EQ(count(60), 0U);
    tools.add(tool, "echo '" + good + "'; exec sleep 60");
    EXPECT_EQ(count(0.2), 0U);
    tools.remove(tool);
    EXPECT_EQ(count(60), 0U);
}

} // namespace

TEST(Xcode, OnlyArchivesOfADayAndBuildsThatRest) {
    const test::TemporaryHome home;
    const std::string base = xcodeFolder;
    test::makeFiles(
        home, "Library/Developer/Xcode/{}",
        "DerivedData/App-x/o|DerivedData/Fresh/o|Archives/2025/Old.xcarchive/o|Archives/2025/Note.txt|"
        "Archives/Loose.xcarchive/o");
    home.link(base + "Archives/Linked", home.at(base + "Archives/2025"));
    test::ageEverything(home, 181);
    test::age(home, base + "DerivedData/Fresh", 0.5 / 24);
    EXPECT_THAT(test::found(xcode, test::scanContext(home)), ElementsAre("App-x", "Old.xcarchive"));
}

TEST(Simulators, TheNewestSymbolsStay) {
    test::ScriptedTools tools;
    tools.remove("xcrun");
    const test::TemporaryHome home;
    const std::string base = xcodeFolder;
    test::makeFiles(
        home, "Library/Developer/Xcode/{}",
        "iOS DeviceSupport/9.3/s|iOS DeviceSupport/17.2/s|iOS DeviceSupport/16.4/s|iOS DeviceSupport/99.txt|"
        "watchOS DeviceSupport/10.0/s|tvOS DeviceSupport/1/s|tvOS DeviceSupport/2/s|"
        "visionOS DeviceSupport/3/s|visionOS DeviceSupport/4/s");
    home.link(base + "watchOS DeviceSupport/99.0", home.at(base + "iOS DeviceSupport/9.3"));
    test::ageEverything(home, 2);
    EXPECT_THAT(test::found(simulators, test::scanContext(home)), ElementsAre("1", "16.4", "3", "9.3"));
}

TEST(Simulators, UnavailableOnesAreTheToolsBusiness) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    home.fileOfSize("Library/Developer/CoreSimulator/Devices/A/data", 9000);
    home.fileOfSize("Library/Developer/CoreSimulator/Devices/B/data", 9000);
    const ScanContext context = test::scanContext(home);
    tools.addPrinting("xcrun",
                      R"({"devices": {"iOS 15": [{"udid": "A"}, {"udid": "B"}], "tvOS": [{"udid": "C"}]}})");
    const auto items = test::scan(simulators, context);
    ASSERT_EQ(items.size(), 1U);
    EXPECT_THAT(test::linesOf(items), ElementsAre("3 unavailable simulator(s) | safe | "
                                                  "Simulators for runtimes that are no longer installed"));
    EXPECT_EQ(items[0].id, "cmd:xcrun simctl delete unavailable");
    EXPECT_EQ(items[0].size, 2 * 12288);
    ASSERT_THAT(tools.calls("xcrun"),
                ElementsAre(ElementsAre("simctl", "list", "devices", "unavailable", "-j")));
    tools.addPrinting("xcrun", R"({"devices": {"": [{"udid": "A"}, {"udid": "A"}, {"udid": ""}, {"udid": "."},
        {"udid": ".."}, {"udid": "../.."}, {"udid": "..\u0000"}, {"udid": "A/data"}]}})");
    EXPECT_EQ(test::scan(simulators, context).at(0).size, 12288);
}

TEST(PackageCaches, ByTableAndSize) {
    const test::TemporaryHome home;
    test::makeFiles(home, "{}/data",
                    ".npm/_cacache|.yarn/berry/cache|Library/pnpm/store|.pnpm-store|.bun/install/"
                    "cache|.cache/pip|.cache/uv|"
                    ".cargo/registry/cache|.cargo/git/checkouts|go/pkg/mod/cache/download|.gradle/caches|"
                    ".gradle/wrapper/dists|.m2/repository|.cache/huggingface|.android/cache",
                    1048576);
    test::makeFiles(
        home, "Library/Caches/{}/data",
        "Yarn|pnpm|pip|pypoetry|Homebrew|CocoaPods|org.swift.swiftpm|go-build|ms-playwright|JetBrains",
        1048576);
    test::makeFiles(home, "{}/data", ".expo|go/pkg/mod/cache/other", 1044480);
    test::ageEverything(home, 2);
    ScanContext context = test::scanContext(home);
    std::map<Risk, std::vector<std::string>> titles;
    for (const ScanItem& item : test::scan(packageCaches, context)) titles[item.risk].push_back(item.title);
    EXPECT_EQ(titles[Risk::safe].size(), 21U);
    EXPECT_THAT(titles[Risk::review],
                ElementsAre("Gradle wrapper distributions", "Maven repository", "Playwright browsers"));
    EXPECT_THAT(titles[Risk::caution], ElementsAre("Hugging Face models/datasets"));
    context.isCancelled = [asked = 0]() mutable { return ++asked > 2; };
    EXPECT_THAT(test::found(packageCaches, context), ElementsAre("Yarn cache", "npm cache"));
}

TEST(Docker, OffersWhatDockerSaysItCanReclaim) {
    test::ScriptedTools tools;
    const test::TemporaryHome home;
    const ScanContext context = test::scanContext(home);
    tools.addPrinting("docker", R"J({"Type": "Images", "Reclaimable": "1.5GB (50%)"}
{"Type": "Containers", "Reclaimable": "1B"}
{"Type": "Anything", "Reclaimable": "1MB"}
broken

{"Type": "Local Volumes", "Reclaimable": "512kB (100%)"}
{"Type": "Build Cache", "Reclaimable": "3MB"}
)J");
    const auto items = test::scan(docker, context);
    ASSERT_EQ(items.size(), 4U);
    EXPECT_EQ(items[0].id, "cmd:docker builder prune -f");
    EXPECT_EQ(items[1].id, "cmd:docker container prune -f");
    EXPECT_EQ(items[2].id, "cmd:docker image prune -a -f");
    EXPECT_EQ(items[2].size, 1500000000);
    EXPECT_EQ(items[3].id, "cmd:docker volume prune -f");
    EXPECT_THAT(test::linesOf(items),
                ElementsAre("Docker build cache | safe | Layer cache; rebuilt on next build",
                            "Stopped Docker containers | review | Containers that are not running",
                            "Unused Docker images | review | "
                            "Images not used by any container; pulled again when needed",
                            "Unused Docker volumes | caution | Volumes may hold database data"));
    EXPECT_THAT(tools.calls("docker"), ElementsAre(ElementsAre("system", "df", "--format", "{{json .}}")));
    tools.addPrinting("docker", R"({"Type": "Containers", "Reclaimable": "0B"})");
    EXPECT_THAT(test::scan(docker, context), IsEmpty());
}

TEST(OutsideTools, FindNothingWhenTheyDoNotAnswer) {
    expectNothingOfOtherAnswers(ScannerRegistry::makeSimulatorScanner, "xcrun",
                                R"({"devices": {"a": [{"udid": "A"}]}})");
    expectNothingOfOtherAnswers(ScannerRegistry::makeDockerScanner, "docker",
                                R"({"Type": "Images", "Reclaimable": "1GB"})");
}

TEST(OutsideToolsThreaded, AreNotWaitedForAfterCancel) {
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
    EXPECT_THAT(test::scan(docker, context), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - cancelledAt, std::chrono::seconds(1));
    EXPECT_THAT(test::scan(simulators, again), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - cancelledAt, std::chrono::seconds(1));
}

TEST(Docker, ParsesItsSizes) {
    using Case = std::pair<const char*, int64_t>;
    for (const auto& [text, bytes] :
         {Case{"1.5GB", 1500000000}, Case{"512kB (100%)", 512000}, Case{"512KB", 512000},
          Case{"3.2TB", 3200000000000}, Case{"-2MB", -2000000}, Case{"1.9B", 1}, Case{"1e3kB", 1000000}})
        EXPECT_EQ(ForeignText::parseSize(text), bytes) << text;
    for (const char* nothing :
         {"0B", "12", "3.2TiB", "", "B", "GB", " 1GB", "1,5GB", "9e99TB", "nanB", "infB", "0x10B"})
        EXPECT_EQ(ForeignText::parseSize(nothing), 0) << nothing;
}
