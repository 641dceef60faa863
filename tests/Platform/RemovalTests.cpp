#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/FewDescriptors.h"
#include "tests/Support/Mounted.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/TemporaryHome.h"

#include <fcntl.h>
#include <gmock/gmock.h>

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

TEST(OpenFolder, StaysWithTheFolderItOpened) {
    const TemporaryHome home;
    home.file("real/file", "x");
    home.link("real/out", home.folder("elsewhere"));
    home.link("way", home.at("real"));
    const auto folder = OpenFolder::open(home.at("way"));
    ASSERT_TRUE(folder);
    EXPECT_EQ(folder->realPath(), home.at("real"));
    EXPECT_EQ(folder->subfolder("new").error().code, ENOENT);
    ASSERT_TRUE(folder->subfolder("new", OpenFolder::Missing::create));
    for (const char* none : {"out", "file"}) EXPECT_FALSE(folder->subfolder(none)) << none;
    EXPECT_EQ(OpenFolder::open(home.at("real/file")).error().code, ENOTDIR);

    auto lock = folder->lock();
    ASSERT_TRUE(lock);
    EXPECT_EQ(OpenFolder::open(home.at("real"))->lock().error().code, EWOULDBLOCK);
    lock->release();
    fs::rename(home.at("real"), home.at("moved"));
    home.file("real/other", "");
    EXPECT_EQ(folder->lock().error().code, ENOENT) << "what is at the path now is another folder";
    EXPECT_EQ(folder->list()->size(), 3U);
    EXPECT_EQ(folder->entry("file").status()->size, 1);
    EXPECT_TRUE(folder->sync());
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

TEST(RemoveItemThreaded, TakesWideAndDeepTreesWithFewDescriptors) {
    const TemporaryHome home;
    for (int i = 0; i < 3000; ++i) home.file("tree/wide/" + std::to_string(i) + "/file", "");
    for (int i = 0; i < 40; ++i) makeChain(home.at("tree/deep/" + std::to_string(i)), 100);
    makeChain(home.at("tree/deepest"), 3000);
    const test::FewDescriptors limit(128);
    EXPECT_EQ(told(removePath(home.at("tree"))), "done");
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
    for (const char* file : {"cache/module/source/file.go", "cache/closed/file", "locked/file"})
        home.file(file, "x");
    for (const char* folder : {"cache/module/source", "cache/module", "locked"})
        fs::permissions(home.at(folder), fs::perms(0500));
    fs::permissions(home.at("cache/closed"), fs::perms(0));
    const test::OrdinaryUser user({home.path()});
    EXPECT_EQ(told(removePath(home.at("cache"))), "done");
    EXPECT_EQ(removePath(home.at("locked/file")).error().code, EACCES)
        << "the folder that holds the item is not ours to change";
    EXPECT_TRUE(fs::exists(home.at("locked/file")));
}

TEST(RemoveItem, LeavesMountedVolumesAlone) {
    const TemporaryHome home;
    home.file("documents/keep", "kept");
    home.file("tree/a/file", "x");
    const test::Mounted mounted("--bind " + home.at("documents"), home.folder("tree/m\x1b\xff"));
    if (!mounted.done) GTEST_SKIP() << "needs root";
    EXPECT_THAT(told(removePath(home.at("tree"))),
                HasSubstr("tree/m␛\uFFFD: another volume is mounted there"));
    EXPECT_EQ(test::filesBelow(home.at("documents")), "keep=kept\n");
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
    for (const int error : {EIO, ENOSPC, EROFS, EMFILE}) {
        bool failedOne = true;
        for (int64_t n = 1; failedOne; ++n) {
            const std::string path = home.file("file", "old");
            Status done;
            failedOne = test::failCall(n, error, [&] { done = replaceFile(path, "new"); });
            EXPECT_EQ(test::filesBelow(home.path()), done ? "file=new\n" : "file=old\n");
        }
    }
}
