#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Support/PathText.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/TemporaryHome.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

using namespace loftmere;
using test::TemporaryHome;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

Status removePath(const std::string& path) {
    auto place = Place::open(path);
    return place ? removeItem(*place) : failed(place.error());
}

std::string told(const Status& status) {
    return status ? "done" : status.error().message;
}

// A chain of folders whose path is far longer than a path may be, with a file in each.
void makeChain(const std::string& top, int depth) {
    fs::create_directories(top);
    FileDescriptor folder(::open(top.c_str(), O_DIRECTORY | O_RDONLY));
    for (int i = 0; i < depth; ++i) {
        ::close(::openat(folder.get(), "file", O_CREAT | O_WRONLY, 0600));
        ASSERT_EQ(::mkdirat(folder.get(), "a-name-of-some-length", 0700), 0);
        folder = FileDescriptor(::openat(folder.get(), "a-name-of-some-length", O_DIRECTORY | O_RDONLY));
    }
}

} // namespace

TEST(Place, TellsTheRealPathAndRefusesWhatIsNoEntry) {
    const TemporaryHome home;
    home.file("real/inner/file", "x");
    home.link("way", home.at("real"));
    const struct {
        std::string path, real; // no real path: refused
    } cases[] = {
        {home.at("real/inner/file"), home.at("real/inner/file")},
        {home.at("way/inner//file/"), home.at("real/inner/file")},
        {home.at("way/inner/../inner/./file"), home.at("real/inner/file")},
        {home.at("way"), home.at("way")},
        {home.at("real/missing"), home.at("real/missing")},
        {"/", ""},
        {"", ""},
        {home.at("real/.."), ""},
        {home.at("real/."), ""},
        {home.at("none/file"), ""},
        {home.at("real/inner/file/below"), ""},
        {home.at("real") + std::string("\0/x", 3), ""},
    };
    for (const auto& [path, real] : cases) {
        const auto place = Place::open(path);
        EXPECT_EQ(place ? place->realPath() : "", real) << path;
    }
    auto gone = Place::open(home.at("real/inner/file"));
    fs::rename(home.at("real"), home.at("moved"));
    home.folder("real/inner");
    EXPECT_TRUE(gone->status()) << "a place follows its folder, not the path";
    EXPECT_TRUE(removeItem(*gone));
    EXPECT_FALSE(fs::exists(home.at("moved/inner/file")));
}

TEST(RemoveItem, TakesAllBelowAndNothingElse) {
    const TemporaryHome home;
    home.file("outside/keep", "kept");
    home.file("tree/a/b/file", "x");
    home.link("tree/a/out", home.at("outside"));
    home.link("tree/dangling", "/nowhere");
    ::mkfifo(home.at("tree/pipe").c_str(), 0600);
    home.link("link", home.at("outside"));
    for (const char* item : {"tree", "link"}) EXPECT_EQ(told(removePath(home.at(item))), "done");
    EXPECT_EQ(test::filesBelow(home.path()), "outside/keep=kept\n");
    EXPECT_THAT(told(removePath(home.at("tree"))), HasSubstr("No such file"));
}

TEST(RemoveItem, TakesWideAndDeepTreesWithFewDescriptors) {
    const TemporaryHome home;
    for (int i = 0; i < 3000; ++i) home.file("tree/wide/" + std::to_string(i) + "/file", "");
    for (int i = 0; i < 40; ++i) makeChain(home.at("tree/deep/" + std::to_string(i)), 100);
    makeChain(home.at("tree/deepest"), 3000);
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{.rlim_cur = 128, .rlim_max = before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &few);
    const Status done = removePath(home.at("tree"));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(told(done), "done");
    EXPECT_FALSE(fs::exists(home.at("tree")));
}

TEST(Place, ReachesBelowTheLongestPath) {
    const TemporaryHome home;
    makeChain(home.at("deep"), 400);
    std::string path = home.at("deep");
    for (int i = 0; i < 400; ++i) path += "/a-name-of-some-length";
    const auto place = Place::open(path);
    ASSERT_TRUE(place) << place.error().message;
    EXPECT_EQ(place->realPath(), path);
    EXPECT_TRUE(removeItem(*place));
    EXPECT_FALSE(Place::open(path)->status());
}

TEST(RemoveItem, OpensReadOnlyFoldersOfOurs) {
    const TemporaryHome home;
    home.file("cache/module/source/file.go", "x");
    home.file("cache/closed/file", "x");
    home.file("locked/file", "x");
    const char* changed[] = {"cache/module/source", "cache/module", "cache/closed", "cache", "locked", ""};
    for (const char* folder : changed) ASSERT_EQ(::chown(home.at(folder).c_str(), 65534, 65534), 0);
    fs::permissions(home.at("cache/module/source"), fs::perms(0500));
    fs::permissions(home.at("cache/module"), fs::perms(0500));
    fs::permissions(home.at("cache/closed"), fs::perms(0));
    fs::permissions(home.at("locked"), fs::perms(0500));
    if (::seteuid(65534) != 0) GTEST_SKIP() << "needs root";
    const Status cache = removePath(home.at("cache"));
    const Status inLocked = removePath(home.at("locked/file"));
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(told(cache), "done");
    EXPECT_EQ(inLocked.error().code, EACCES) << "the folder that holds the item is not ours to change";
    EXPECT_TRUE(fs::exists(home.at("locked/file")));
}

TEST(RemoveItem, LeavesMountedVolumesAlone) {
    const TemporaryHome home;
    home.file("documents/keep", "kept");
    home.file("tree/a/file", "x");
    home.folder("tree/mounted");
    if (::mount(home.at("documents").c_str(), home.at("tree/mounted").c_str(), nullptr, MS_BIND, nullptr) !=
        0) {
        GTEST_SKIP() << "needs root";
    }
    const Status done = removePath(home.at("tree"));
    ::umount(home.at("tree/mounted").c_str());
    EXPECT_THAT(told(done), HasSubstr("tree/mounted: another volume is mounted there"));
    EXPECT_EQ(test::filesBelow(home.path()), "documents/keep=kept\n");
}

TEST(RemoveItem, AnswersHonestlyWhicheverCallFails) {
    const TemporaryHome home;
    const auto make = [&] {
        for (int i = 0; i < 12; ++i) home.file("tree/" + std::to_string(i % 3) + "/" + std::to_string(i), "");
    };
    make();
    const int64_t made = test::callsIn([&] { EXPECT_TRUE(removePath(home.at("tree"))); });
    for (const int error : {EIO, ENOSPC, EACCES, EROFS, EXDEV, EMFILE}) {
        for (int64_t n = 1; n <= made; ++n) {
            make();
            Status done;
            EXPECT_TRUE(test::failCall(n, error, [&] { done = removePath(home.at("tree")); }));
            EXPECT_EQ(done.has_value(), !fs::exists(home.at("tree"))) << n << ": " << told(done);
            if (!done) EXPECT_THAT(told(done), testing::StartsWith("Could not "));
        }
    }
}

TEST(MoveItem, NeverOverwrites) {
    const TemporaryHome home;
    const auto from = Place::open(home.file("a", "one"));
    const auto taken = Place::open(home.link("b", "/nowhere"));
    EXPECT_EQ(moveItem(*from, *taken).error().code, EEXIST);
    EXPECT_EQ(moveItem(*from, taken->beside("c")).has_value(), true);
    EXPECT_EQ(test::filesBelow(home.path()), "c=one\n");
    // A file system without the exclusive rename: the look comes first.
    Status moved;
    const auto again = Place::open(home.file("a", "two"));
    test::failCall(1, ENOTSUP, [&] { moved = moveItem(*again, from->beside("c")); }, calls::Call::rename);
    EXPECT_EQ(moved.error().code, EEXIST);
    test::failCall(1, ENOTSUP, [&] { moved = moveItem(*again, from->beside("d")); }, calls::Call::rename);
    EXPECT_TRUE(moved);
    EXPECT_EQ(test::filesBelow(home.path()), "c=one\nd=two\n");
}

TEST(TrashItem, FindsAFreeNameAndRemembersThePlace) {
    const TemporaryHome home;
    const auto trash = [&](const std::string& path) { return trashItem(*Place::open(path), home.path()); };
    EXPECT_EQ(told(trash(home.file("docs/é 1.txt", "one"))), "done");
    EXPECT_EQ(told(trash(home.file("docs/é 1.txt", "two"))), "done");
    const std::string note = *readFile(home.at(".local/share/Trash/info/é 1.txt.trashinfo"));
    EXPECT_THAT(note,
                HasSubstr("[Trash Info]\nPath=" + home.at("docs/%C3%A9%201.txt") + "\nDeletionDate=20"));
    EXPECT_EQ(*readFile(home.at(".local/share/Trash/files/é 1 2.txt")), "two");
    home.folder(".Trash");
    for (const char* content : {"three", "four"}) EXPECT_EQ(told(trash(home.file("b", content))), "done");
    EXPECT_EQ(*readFile(home.at(".Trash/b 2")), "four");
    EXPECT_EQ(told(trash(home.file(std::string(255, 'n'), "long"))), "done");
    EXPECT_EQ(told(trash(home.file(std::string(255, 'n'), "long"))), "done");
}

TEST(ReplaceFile, LeavesTheOldFileAndNothingElseOnFailure) {
    const TemporaryHome home;
    const std::string path = home.file("file", "old");
    const int64_t made = test::callsIn([&] { EXPECT_TRUE(replaceFile(path, "old")); });
    for (const int error : {EIO, ENOSPC, EROFS, EMFILE}) {
        for (int64_t n = 1; n <= made; ++n) {
            Status done;
            test::failCall(n, error, [&] { done = replaceFile(path, "new"); });
            EXPECT_EQ(test::filesBelow(home.path()), done ? "file=new\n" : "file=old\n");
            (void)replaceFile(path, "old");
        }
    }
}

TEST(FileLock, IsHeldByOne) {
    const TemporaryHome home;
    auto first = FileLock::acquire(home.at("new/folder/agent.lock"));
    ASSERT_TRUE(first);
    EXPECT_FALSE(FileLock::acquire(home.at("new/folder/agent.lock")));
    first->release();
    EXPECT_TRUE(FileLock::acquire(home.at("new/folder/agent.lock")));
    EXPECT_FALSE(FileLock::acquire(home.folder("taken")));
}
