#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/TreeWalk.h"
#include "tests/Support/OrdinaryUser.h"
#include "tests/Support/TemporaryHome.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace loftmere::test {

namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace std::string_literals;

struct Question {
    std::string path;
    bool exists, isReachable, isSymlink, isDirectory;
};

} // namespace

TEST(FS, tellsWhatStandsAtAPath) {
    const TemporaryHome home;
    home.file("file", "x");
    home.folder("folder");
    home.link("toFile", "file");
    home.link("toFolder", "folder");
    home.link("dangling", "nowhere");
    home.link("loop", "loop");
    constexpr bool yes = true;
    constexpr bool no = false;
    const Question questions[]{{"file", yes, yes, no, no},      {"folder", yes, yes, no, yes},
                               {"folder/", yes, yes, no, yes},  {"toFile", yes, yes, yes, no},
                               {"toFolder", yes, yes, yes, no}, {"toFolder//", yes, yes, yes, no},
                               {"dangling", yes, yes, yes, no}, {"loop", yes, yes, yes, no},
                               {"missing", no, no, no, no},     {"missing/below", no, no, no, no},
                               {"file/below", no, no, no, no},  {"loop/below", no, yes, no, no},
                               {"folder\0x"s, no, no, no, no},  {std::string(300, 'n'), no, yes, no, no}};
    for (const auto& [path, exists, isReachable, isSymlink, isDirectory] : questions) {
        const std::string whole = home.at(path);
        EXPECT_EQ(FS::exists(whole), exists) << path;
        EXPECT_EQ(FS::isReachable(whole), isReachable) << path;
        EXPECT_EQ(FS::isSymlink(whole), isSymlink) << path;
        EXPECT_EQ(FS::isDirectory(whole), isDirectory) << path;
    }
    EXPECT_FALSE(FS::exists(""));
    EXPECT_TRUE(FS::isDirectory("/"));
}

TEST(FS, children) {
    const TemporaryHome home;
    home.file("folder/.DS_Store", "");
    EXPECT_THAT(FS::children(home.at("folder")), IsEmpty());
    home.file("folder/.DS_Store2", "");
    home.file("folder/.hidden", "");
    home.file("folder/line\nbreak", "");
    home.file("folder/bad\xff", "");
    home.folder("folder/below/deeper");
    home.link("toFolder", "folder");
    EXPECT_THAT(FS::children(home.at("toFolder")),
                UnorderedElementsAre(home.at("toFolder/.DS_Store2"), home.at("toFolder/.hidden"),
                                     home.at("toFolder/line\nbreak"), home.at("toFolder/below")));
    for (const std::string& path : {"missing"s, "folder/.hidden"s, "folder\0"s}) {
        EXPECT_THAT(FS::children(home.at(path)), IsEmpty());
    }
}

TEST(FS, dates) {
    const TemporaryHome home;
    const Date old = addSeconds(currentDate(), -86400 * 100);
    const auto after = [&](double seconds) { return addSeconds(old, seconds); };
    home.file("folder/a/new", "");
    home.file("folder/b", "");
    home.link("link", home.at("folder/a/new"));
    using Dated = std::pair<const char*, double>;
    for (const auto& [path, seconds] : {Dated{"folder/a/new", 9}, Dated{"folder/a", 2}, Dated{"folder/b", 5},
                                        Dated{"folder", 1}, Dated{"link", 0}}) {
        home.setDates(path, after(seconds));
    }
    const std::string folder = home.at("folder");
    EXPECT_EQ(FS::newestModification(folder, 0), after(1));
    EXPECT_EQ(FS::newestModification(folder, 2),
              after(5)); // both entries of the folder come before what lies deeper
    EXPECT_EQ(FS::newestModification(folder, 3), after(9));
    EXPECT_EQ(FS::newestModification(home.at("link"), 100), after(0));
    EXPECT_EQ(FS::newestModification(home.at("missing"), 100), std::nullopt);
    EXPECT_EQ(FS::modificationDate(home.at("link")), after(0));

    const timespec accessedLater[2] = {{.tv_sec = 2'000'000'000, .tv_nsec = 0},
                                       {.tv_sec = 0, .tv_nsec = UTIME_OMIT}};
    ASSERT_EQ(::utimensat(AT_FDCWD, home.at("folder/b").c_str(), accessedLater, 0), 0);
    EXPECT_EQ(FS::lastUsedDate(home.at("folder/b")), dateFrom(accessedLater[0]));
    EXPECT_EQ(FS::lastUsedDate(home.at("folder/a")), after(2));
    EXPECT_GT(FS::addedToFolderDate(home.at("folder/b")), old);
    EXPECT_EQ(FS::addedToFolderDate(home.at("missing")), std::nullopt);
    EXPECT_EQ(FS::lastUsedDate(home.at("missing")), std::nullopt);
}

TEST(FS, allocatedSizeCountsBlocksNotLengths) {
    const TemporaryHome home;
    home.fileOfSize("folder/small", 1);
    home.fileOfSize("folder/.hidden/package.app/large", 100'000);
    const std::string sparse = home.file("folder/sparse", "");
    ASSERT_EQ(::truncate(sparse.c_str(), 1 << 30), 0);
    ASSERT_EQ(::mkfifo(home.at("folder/fifo").c_str(), 0644), 0);
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
    home.at("folder/socket").copy(address.sun_path, sizeof address.sun_path - 1);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
    home.link("folder/link", home.at("folder/.hidden"));

    const int64_t large = FS::allocatedSize(home.at("folder/.hidden/package.app/large"));
    EXPECT_GE(large, 100'000);
    EXPECT_EQ(large % 512, 0);
    EXPECT_EQ(FS::allocatedSize(home.at("folder")), large + FS::allocatedSize(home.at("folder/small")));
    for (const char* path :
         {"folder/link", "folder/link/", "missing", "folder/sparse", "folder/fifo", "folder/socket"})
        EXPECT_EQ(FS::allocatedSize(home.at(path)), 0) << path;
}

TEST(FS, passesOverWhatMayNotBeRead) {
    const TemporaryHome home;
    for (const char* file : {"folder/open/file", "folder/closed/file", "folder/notEntered/file"})
        home.fileOfSize(file, 5000);
    const std::string folder = home.at("folder");
    const int64_t whole = FS::allocatedSize(folder);
    const OrdinaryUser user({home.path()});
    ASSERT_EQ(::chmod(home.at("folder/closed").c_str(), 0), 0);
    ASSERT_EQ(::chmod(home.at("folder/notEntered").c_str(), 0444), 0); // its names can be read, no more
    EXPECT_EQ(FS::allocatedSize(folder) * 3, whole);
    EXPECT_TRUE(FS::isReachable(home.at("folder/closed/any")));
    EXPECT_FALSE(FS::exists(home.at("folder/closed/file")));
    EXPECT_THAT(FS::children(home.at("folder/closed")), IsEmpty());
    EXPECT_TRUE(FS::newestModification(folder, 99));
}

// An access date older than a day is refreshed by any plain reading, also where the volume is mounted
// "relatime".
TEST(FS, lookingIsNotUsing) {
    const TemporaryHome home;
    home.file("folder/below/file", "content");
    const std::vector<std::string> paths{"folder/below/file", "folder/below", "folder"};
    const auto old = std::chrono::floor<std::chrono::seconds>(addSeconds(currentDate(), -86400 * 100));
    for (const std::string& path : paths) home.setDates(path, old);
    for (const std::string& path : paths) {
        const std::string whole = home.at(path);
        (void)FS::children(whole);
        (void)FS::allocatedSize(whole);
        (void)FS::newestModification(whole, 100);
        (void)FS::isRemoteVolume(whole);
        (void)readFile(whole);
        walkTree(whole, [](const WalkEntry&) { return WalkStep::proceed; });
    }
    for (const std::string& path : paths) EXPECT_EQ(FS::lastUsedDate(home.at(path)), Date(old)) << path;
}

TEST(FS, volumes) {
    const TemporaryHome home;
    struct stat status{};
    ASSERT_EQ(::stat(home.path().c_str(), &status), 0);
    home.link("toProc", "/proc");
    EXPECT_EQ(FS::volumeID(home.path()), std::to_string(status.st_dev));
    EXPECT_TRUE(FS::sameVolume(home.path(), home.folder("folder")));
    EXPECT_EQ(FS::sameVolume(home.path(), home.at("toProc")), !FS::exists("/proc/self"));
    EXPECT_FALSE(FS::sameVolume(home.at("missing"), home.at("missing")));
    EXPECT_FALSE(FS::isRemoteVolume(home.at("missing")));
    const auto space = FS::volumeSpace(home.path());
    ASSERT_TRUE(space);
    EXPECT_GT(space->total, space->free);
    EXPECT_GT(FS::freeSpace(home.path()), 0);
    for (const std::string& path : {home.at("missing"), home.path() + "\0"s}) {
        EXPECT_EQ(FS::volumeSpace(path), std::nullopt);
        EXPECT_EQ(FS::freeSpace(path), std::nullopt);
    }
    EXPECT_EQ(FS::VolumeSpace{}.freeFraction(), 1.0);
}

} // namespace loftmere::test
