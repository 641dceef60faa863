#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/Duplicates/ContentGroups.h"
#include "CleanerCore/Scanning/Duplicates/DuplicateScanner.h"
#include "tests/Support/FewDescriptors.h"
#include "tests/Support/ScannerFixtures.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <ranges>
#include <set>

using namespace loftmere;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

DuplicateScanner scannerOf(int64_t minBytes) {
    DuplicateScanner scanner;
    scanner.minBytes = minBytes;
    return scanner;
}

// "{path below home} <- {reason}" of each item.
std::vector<std::string> found(const test::TemporaryHome& home, const DuplicateScanner& scanner,
                               const ScanContext& context) {
    std::vector<std::string> lines;
    for (const ScanItem& item : scanner.scan(context).value()) {
        lines.push_back(item.path()->substr(home.path().size() + 1) + " <- " + item.reason);
    }
    return lines;
}

} // namespace

TEST(DuplicateScannerThreaded, FindsWhatIsEqualAndProposesAllButOne) {
    const test::TemporaryHome home;
    home.fileOfSize("Downloads/x.zip", 524288);
    home.fileOfSize("Documents/x.zip", 524288);
    home.fileOfSize("Movies/deep/Project/x.zip", 524288);
    for (const char* tooSmall : {"Documents/s1", "Documents/s2"}) home.fileOfSize(tooSmall, 524287);
    test::makeFiles(
        home, "Movies/{}",
        "a.app/x|a.photoslibrary/x|a.musiclibrary/x|a.fcpbundle/x|a.logicx/x|a.xcodeproj/x|a.xcworkspace/x|"
        "a.sparsebundle/x|a.bundle/x|a.framework/x|.git/x|.stuff/x|.x|.Trash/x|Library/x|node_modules/x|"
        "a.IMovieLibrary/x|a.band/x|a.Git/x|a.APP/x|../Elsewhere/x",
        524288);
    home.link("Movies/link.zip", home.at("Documents/x.zip"));
    home.link("Music", home.at("Elsewhere"));
    std::string late(600000, 'x');
    home.file("Documents/late1", late);
    late[70000] = 'y';
    home.file("Documents/late2", late);

    EXPECT_THAT(found(home, {}, test::scanContext(home)),
                UnorderedElementsAre("Downloads/x.zip <- Identical to ~/Documents/x.zip (kept)",
                                     "Movies/deep/Project/x.zip <- Identical to ~/Documents/x.zip (kept)"));
}

TEST(DuplicateScanner, RootsAreResolvedAndNeverWalkedTwice) {
    const test::TemporaryHome home;
    home.file("work/sub/a", "same");
    home.file("work/b", "same");
    const std::string outside = home.file("other/c", "same");
    DuplicateScanner scanner = scannerOf(1);
    const auto countFor = [&](std::vector<std::string> roots) {
        scanner.roots = std::move(roots);
        return scanner.files(test::scanContext(home)).size();
    };
    EXPECT_EQ(countFor({}), 0U);
    EXPECT_EQ(countFor({"work", "~/work/sub", home.at("work/"), "work/../work", "missing"}), 2U);
    EXPECT_EQ(countFor({"work", "~/other"}), 3U);
    EXPECT_EQ(countFor({outside}), 0U); // no folder
}

TEST(DuplicateScanner, ChoosesTheKeeper) {
    const test::TemporaryHome home;
    const auto keeper = [&](std::vector<std::string> names) {
        for (std::string& name : names) name = home.at(name);
        return DuplicateScanner::chooseKeeper(names, home.path()).substr(home.path().size() + 1);
    };
    const struct {
        std::vector<std::string> names;
        const char* kept;
    } cases[] = {
        {{"Downloads/x.zip", "Documents/longer/x.zip"}, "Documents/longer/x.zip"},
        {{"Desktop/a copy.z", "Downloads/long name.z"}, "Downloads/long name.z"},
        {{"Desktop/a.z", "Documents/long name copy.z"}, "Documents/long name copy.z"},
        {{"d/report (1).pdf", "d/report.pdf"}, "d/report.pdf"},
        {{"d/r (12).pdf", "d/report-final.pdf"}, "d/report-final.pdf"},
        {{"d/r copy.pdf", "d/report.pdf"}, "d/report.pdf"},
        {{"d/r-2.pdf", "d/(1).pdf"}, "d/(1).pdf"},
        {{"d/r (x).pdf", "d/report (2)"}, "d/r (x).pdf"}, // neither is marked
        {{"d/r copy 2/1.pdf", "d/rr copy 2/1.pdf"}, "d/r copy 2/1.pdf"},
        {{"Downloads2/long.z", "Downloads/a.z"}, "Downloads2/long.z"},
        {{"d/e\u0301e\u0301.z", "d/abc.z"}, "d/e\u0301e\u0301.z"}, // an accent is no character of its own
        {{"d/b.z", "d/a.z"}, "d/b.z"},                             // no dates: the earlier in the list
    };
    for (const auto& [names, kept] : cases) EXPECT_EQ(keeper(names), kept);
    home.file("d/new.z", "");
    home.file("d/old.z", "");
    home.setAgeDays("d/old.z", 3);
    EXPECT_EQ(keeper({"d/non.z", "d/new.z", "d/old.z"}), "d/old.z");
}

// Sizes around the lengths of blocks, few contents that part anywhere, several names of one inode.
TEST(DuplicateScannerThreaded, AgreesWithAComparisonOfWholeContents) {
    std::mt19937 random(7);
    const auto upTo = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n)(random); };
    constexpr size_t sizes[] = {0, 1, 16383, 16384, 16385, 65537, 131072, 131073, 300000};
    for (int round = 0; round < 12; ++round) {
        const test::TemporaryHome home;
        std::map<std::string, std::vector<std::string>> byContent;
        for (int i = 0; i < 60; ++i) {
            std::string content(sizes[upTo(std::size(sizes) - 1)], 'a');
            for (size_t edits = upTo(2); edits > 0 && !content.empty(); --edits) {
                content[(content.size() - 1) * upTo(4) / 4] = static_cast<char>('a' + upTo(2));
            }
            const std::string path =
                home.file("Documents/d" + std::to_string(i % 7) + "/" + std::to_string(i), content);
            byContent[content].push_back(path);
            if (upTo(5) > 0) continue;
            std::filesystem::create_hard_link(path, path + "-");
            byContent[content].push_back(path + "-");
        }
        ASSERT_EQ(::mkfifo(home.at("Documents/fifo").c_str(), 0600), 0); // as long as an empty file
        const auto listed = scannerOf(0).files(test::scanContext(home));
        std::set<std::set<std::string>> expected;
        size_t proposals = 0;
        for (const auto& [content, paths] : byContent) {
            if (paths.size() > 1) expected.insert({paths.begin(), paths.end()});
            proposals += paths.size() - 1;
        }
        EXPECT_EQ(scannerOf(0).scan(test::scanContext(home)).value().size(), proposals);
        for (const size_t openFiles : {0, 3, 100}) {
            std::map<int64_t, std::vector<const ListedFile*>> bySize;
            for (const ListedFile& file : listed) bySize[file.size()].push_back(&file);
            std::set<std::set<std::string>> sets;
            ContentGroups groups(openFiles, [](const std::string&) { return true; });
            for (const auto& [size, files] : bySize) {
                for (const auto& set : groups.split(files)) {
                    std::set<std::string> paths;
                    for (const ListedFile* file : set) paths.insert(file->path);
                    EXPECT_TRUE(sets.insert(paths).second);
                }
            }
            EXPECT_EQ(sets, expected) << "with " << openFiles << " files open";
        }
    }
}

// Each file is spoilt after the walk, most of them in the middle of the comparison; the two good ones go on.
TEST(DuplicateScannerThreaded, LeavesOutWhatVanishesOrChanges) {
    const test::TemporaryHome home;
    for (const char* name :
         {"good1", "good2", "gone", "shrunk", "grown", "edited", "fifo", "link", "folder"}) {
        home.fileOfSize(std::string("Documents/") + name, 400000);
    }
    std::filesystem::create_hard_link(home.at("Documents/good1"), home.at("Documents/alsoGone"));
    const auto at = [&](const char* name) { return home.at(std::string("Documents/") + name); };
    const auto replace = [&](const char* name) {
        std::filesystem::remove(at(name));
        return at(name);
    };
    ScanContext context = test::scanContext(home);
    std::map<std::string, int> told;
    std::atomic<bool> done = false;
    context.report = [&](CleanCategory, const std::string& path) {
        if (path == home.at("Documents") || ++told[path] < 3 || done.exchange(true)) return;
        replace("gone");
        replace("alsoGone");
        ASSERT_EQ(::mkfifo(replace("fifo").c_str(), 0600), 0);
        std::filesystem::create_symlink(at("good1"), replace("link"));
        std::filesystem::create_directory(replace("folder"));
        std::filesystem::resize_file(at("shrunk"), 140000);
        std::filesystem::resize_file(at("grown"), 400001);
        std::ofstream(at("edited"), std::ios::in | std::ios::out).put('y');
    };
    EXPECT_THAT(found(home, scannerOf(1), context),
                testing::AnyOf(ElementsAre("Documents/good2 <- Identical to ~/Documents/good1 (kept)"),
                               ElementsAre("Documents/good1 <- Identical to ~/Documents/good2 (kept)")));
    EXPECT_TRUE(done);
}

TEST(DuplicateScanner, OpensFewFilesAndReadsAnInodeOnce) {
    const test::TemporaryHome home;
    std::vector<ListedFile> listed;
    listed.reserve(50);
    const auto list = [&](const std::string& path) { listed.push_back({path, linkStatus(path).value()}); };
    for (int i = 0; i < 40; ++i) list(home.fileOfSize("many/" + std::to_string(i), 300000));
    std::vector<const ListedFile*> files;
    for (const ListedFile& file : listed) files.push_back(&file);
    const auto openNow = [] {
        return std::ranges::count_if(std::views::iota(0, 256),
                                     [](int fd) { return ::fcntl(fd, F_GETFD) >= 0; });
    };
    const auto before = openNow();
    auto most = before;
    ContentGroups groups(10, [&](const std::string&) { return most = std::max(most, openNow()), true; });
    EXPECT_THAT(groups.split(files), ElementsAre(testing::SizeIs(40)));
    EXPECT_EQ(most, before + 10);
    EXPECT_EQ(openNow(), before);

    std::filesystem::create_hard_link(home.at("many/0"), home.at("many/name"));
    for (const char* name : {"many/0", "many/name"}) list(home.at(name));
    files = {&listed[1], &listed[40], &listed[41]};
    std::map<std::string, int> reads;
    ContentGroups counted(10, [&](const std::string& path) { return ++reads[path], true; });
    EXPECT_THAT(counted.split(files), ElementsAre(testing::SizeIs(3)));
    EXPECT_EQ(reads[listed[41].path], 0);
    files.erase(files.begin());
    reads.clear();
    EXPECT_THAT(counted.split(files), ElementsAre(testing::SizeIs(2)));
    EXPECT_EQ(reads[listed[40].path], 1);
}

TEST(DuplicateScannerThreaded, FilesLargerThanTheirDiskAreNotRead) {
    const test::TemporaryHome home;
    const auto size = static_cast<uintmax_t>(FS::volumeSpace(home.path()).value().total) + 1;
    for (const char* name : {"Documents/a", "Documents/b"}) {
        std::error_code failure;
        std::filesystem::resize_file(home.file(name, ""), size, failure);
        if (failure) GTEST_SKIP() << "no file can be that large here";
    }
    EXPECT_THAT(DuplicateScanner{}.scan(test::scanContext(home)).value(), IsEmpty());
}

TEST(DuplicateScannerThreaded, FewDescriptorsCostNoFindings) {
    const test::TemporaryHome home;
    for (int i = 0; i < 400; ++i)
        home.file("Documents/" + std::to_string(i), std::string(20000 + i / 20, 'a'));
    const test::FewDescriptors limit(40);
    EXPECT_EQ(scannerOf(1).scan(test::scanContext(home)).value().size(), 380U);
}

TEST(DuplicateScanner, CancelledAnswersWhatIsProved) {
    const test::TemporaryHome home;
    std::vector<ListedFile> listed;
    for (const char* content : {"a", "b", "a", "b"}) {
        const std::string path = home.file(std::to_string(listed.size()), std::string(300000, *content));
        listed.push_back({path, linkStatus(path).value()});
    }
    std::vector<size_t> sets;
    for (int reads = 0; reads < 20; ++reads) {
        int left = reads;
        ContentGroups groups(10, [&](const std::string&) { return left-- > 0; });
        sets.push_back(
            groups.split(std::array<const ListedFile*, 4>{&listed[0], &listed[1], &listed[2], &listed[3]})
                .size());
    }
    EXPECT_TRUE(std::ranges::is_sorted(sets));
    EXPECT_THAT(std::set(sets.begin(), sets.end()), ElementsAre(0, 1, 2));
}

TEST(DuplicateScannerThreaded, StopsWithinALargeFile) {
    const test::TemporaryHome home;
    for (const char* name : {"Documents/huge1", "Documents/huge2"}) {
        home.file(name, "");
        std::filesystem::resize_file(home.at(name), int64_t{1} << 36); // sparse
    }
    ScanContext context = test::scanContext(home);
    std::atomic<int> reports = 0;
    context.isCancelled = [&] { return reports >= 1000; };
    context.report = [&](CleanCategory, const std::string&) { ++reports; };
    EXPECT_THAT(found(home, scannerOf(1), context), IsEmpty());
    EXPECT_EQ(reports, 1000);
}
