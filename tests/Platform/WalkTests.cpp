#include "CleanerCore/Platform/TreeWalk.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/FewDescriptors.h"
#include "tests/Support/TemporaryHome.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <set>
#include <thread>

namespace loftmere::test {

namespace {

namespace fs = std::filesystem;

// One file of `fileBytes`, which takes whole blocks, in each folder.
constexpr int64_t fileBytes = 4096;

// A name of the file that all files of a tree share, which is made far faster than files of their own.
void makeFile(const std::string& shared, int folder, const std::string& name) {
    ASSERT_EQ(::linkat(AT_FDCWD, shared.c_str(), folder, name.c_str(), 0), 0);
}

// A chain of folders with a file in each, and beside each link of the chain `siblings` folders with a file.
void makeDeepTree(const TemporaryHome& home, const std::string& root, int levels, int siblings) {
    const std::string shared = home.fileOfSize("shared", fileBytes);
    int folder = ::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels; ++level) {
        makeFile(shared, folder, "file");
        for (int i = 0; i < siblings; ++i) {
            const std::string name = (i % 2 == 0 ? "a" : "z") + std::to_string(i);
            ASSERT_EQ(::mkdirat(folder, name.c_str(), 0755), 0);
            makeFile(shared, folder, name + "/file");
        }
        ASSERT_EQ(::mkdirat(folder, "next", 0755), 0);
        const int below = ::openat(folder, "next", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(folder);
        folder = below;
    }
    ::close(folder);
}

void makeFlatFolder(const TemporaryHome& home, const std::string& root, int files) {
    std::string shared;
    for (int i = 0; i < files; ++i) {
        if (i % 60'000 == 0)
            shared = home.file("empty" + std::to_string(i), ""); // a file has so many names at most
        makeFile(shared, AT_FDCWD, root + "/" + std::to_string(i));
    }
}

struct Visited {
    int folders = 0;
    int64_t allocated = 0;
    size_t longestPath = 0;
    std::multiset<std::string> names = {};
};

Visited visited(const std::string& root) {
    Visited all;
    EXPECT_TRUE(walkTree(root, [&](const WalkEntry& entry) {
        EXPECT_TRUE(entry.path.starts_with(root + "/") && entry.path.ends_with(entry.name));
        const auto status = entry.status();
        if (entry.type == FileType::regular && status) all.allocated += status->allocated;
        all.folders += entry.type == FileType::directory ? 1 : 0;
        all.longestPath = std::max(all.longestPath, entry.path.size());
        all.names.emplace(entry.name);
        return WalkStep::proceed;
    }));
    return all;
}

} // namespace

TEST(Walk, goesDeeperThanPathsMayBeLongWithFewDescriptors) {
    for (const auto& [levels, siblings] : {std::pair{10'000, 0}, std::pair{700, 3}}) {
        const TemporaryHome home;
        const std::string root = home.folder("tree");
        makeDeepTree(home, root, levels, siblings);
        const FewDescriptors limit(160);
        const int64_t expected = int64_t{levels} * (siblings + 1) * fileBytes;
        EXPECT_EQ(allocatedBelow(root), expected);
        const Visited all = visited(root);
        EXPECT_EQ(all.allocated, expected);
        EXPECT_EQ(all.folders, levels * (siblings + 1));
        EXPECT_GT(all.longestPath, static_cast<size_t>(levels) * 5);
    }
}

TEST(WalkThreaded, asksForCancelAtEvery2000thEntryNeverOnTwoThreadsAtOnce) {
    const TemporaryHome home;
    const std::string root = home.folder("tree");
    makeDeepTree(home, root, 20, 100); // 20 * (1 + 100 * 2 + 1) = 4,040 entries
    makeFlatFolder(home, home.folder("tree/flat"), 10'000);
    int asked = 0;
    std::atomic<int> inside = 0;
    const int64_t whole = allocatedBelow(root, [&] {
        EXPECT_EQ(++inside, 1);
        ++asked;
        for (int i = 0; i < 200; ++i) std::this_thread::yield(); // time for another thread to come in
        --inside;
        return false;
    });
    EXPECT_EQ(asked, 7);
    EXPECT_EQ(whole, 20 * 101 * fileBytes);

    asked = 0;
    const int64_t part = allocatedBelow(root, [&] { return ++asked == 3; });
    EXPECT_EQ(asked, 3);
    EXPECT_LT(part, whole);
    EXPECT_GT(part, 0);
}

TEST(WalkThreaded, cancelTakesEffectBeforeThe2000thEntryIsAdded) {
    const TemporaryHome home;
    for (const int files : {1999, 2000}) {
        const std::string root = home.folder("flat" + std::to_string(files));
        for (int i = 0; i < files; ++i) home.fileOfSize(root + "/" + std::to_string(i), 1);
        EXPECT_EQ(allocatedBelow(root, [] { return true; }), 1999 * fileBytes);
    }
}

TEST(WalkThreaded, copesWithHugeFolders) {
    const TemporaryHome home;
    const std::string root = home.folder("tree");
    makeFlatFolder(home, root, 200'000);
    home.fileOfSize("tree/full", fileBytes);
    int asked = 0;
    EXPECT_EQ(allocatedBelow(root, [&] { return ++asked > 1000; }), fileBytes);
    EXPECT_EQ(asked, 100);
    EXPECT_EQ(visited(root).names.size(), 200'001U);
}

TEST(Walk, tellsEveryNameAsItIsAndFollowsNoLink) {
    const TemporaryHome home;
    const std::string outside = home.fileOfSize("outside/big", 1 << 20);
    const std::vector<std::string> names{
        "line\nbreak", "\x1b[31mred", "bad\xff\xfeutf8", std::string(255, 'n'), " ", "-rf", "*", ".hidden"};
    for (const std::string& name : names) home.fileOfSize("tree/" + name + "/" + name, fileBytes);
    home.link("tree/loop", home.at("tree"));
    home.link("tree/self", "self");
    home.link("tree/out", outside);
    home.link("tree/outFolder", home.at("outside"));
    ASSERT_EQ(::mkfifo(home.at("tree/fifo").c_str(), 0644), 0);
    ASSERT_EQ(::link(home.at("tree/-rf/-rf").c_str(), home.at("tree/hard").c_str()), 0);

    const Visited all = visited(home.at("tree"));
    EXPECT_EQ(all.names.size(), names.size() * 2 + 6);
    for (const std::string& name : names) EXPECT_EQ(all.names.count(name), 2U) << printable(name);
    const auto expected = static_cast<int64_t>(names.size() + 1) * fileBytes; // both names of the hard link
    EXPECT_EQ(all.allocated, expected);
    EXPECT_EQ(allocatedBelow(home.at("tree")), expected);
    EXPECT_EQ(allocatedBelow(home.at("tree/loop")), 0);
    EXPECT_EQ(allocatedBelow(outside), 0);
    EXPECT_TRUE(walkTree(home.at("tree/loop"), [](const WalkEntry&) { return WalkStep::stop; }));
    EXPECT_FALSE(walkTree(outside, [](const WalkEntry&) { return WalkStep::proceed; }));
}

// Folders turn into links, files and FIFOs and vanish while they are walked: nothing outside is ever counted,
// nothing is waited for, and what stays is counted every time.
TEST(WalkThreaded, staysInATreeThatChanges) {
    const TemporaryHome home;
    home.fileOfSize("outside/big", 1 << 24);
    makeDeepTree(home, home.folder("tree/steady"), 30, 20);
    const int64_t steady = allocatedBelow(home.at("tree"));
    std::atomic<bool> isDone = false;
    std::thread changer([&] {
        for (int round = 0; !isDone; ++round) {
            const std::string place = home.at("tree/changing" + std::to_string(round % 40));
            std::error_code ignored;
            fs::remove_all(place, ignored);
            switch (round / 40 % 4) {
            case 0: home.fileOfSize(place + "/file", 1); break;
            case 1: fs::create_directory_symlink(home.at("outside"), place, ignored); break;
            case 2: home.fileOfSize(place, 1); break;
            default: ::mkfifo(place.c_str(), 0644);
            }
        }
    });
    for (int i = 0; i < 60; ++i) {
        const int64_t size = allocatedBelow(home.at("tree"));
        EXPECT_GE(size, steady);
        EXPECT_LE(size, steady + 40 * fileBytes);
        EXPECT_LE(visited(home.at("tree")).allocated, steady + 40 * fileBytes);
    }
    isDone = true;
    changer.join();
}

TEST(WalkThreaded, manyAtOnceShareTheHelpers) {
    const TemporaryHome home;
    const std::string root = home.folder("tree");
    makeDeepTree(home, root, 10, 100);
    std::vector<std::thread> callers;
    for (int i = 0; i < 12; ++i)
        callers.emplace_back([&] { EXPECT_EQ(allocatedBelow(root), 10 * 101 * fileBytes); });
    for (std::thread& caller : callers) caller.join();
}

} // namespace loftmere::test
