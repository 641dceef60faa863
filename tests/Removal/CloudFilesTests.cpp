#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/posix/Calls.h"
#include "CleanerCore/Removal/Cleaning/Doors.h"
#include "CleanerCore/Safety/CloudPaths.h"
#include "tests/Support/ScriptedTools.h"

#include <gmock/gmock.h>

#include <chrono>

using namespace loftmere;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(CloudFiles, WhatIsSyncedAndByWhom) {
    struct Case {
        const char* path;
        bool isSynced;
        const char* name;   // CloudFiles::providerName
        const char* keeper; // CloudEvictor::provider
    };
    const std::vector<Case> cases{
        {"/h/Library/Mobile Documents", true, "iCloud Drive", "iCloud Drive"},
        {"/h/Library/Mobile Documents/a/b", true, "iCloud Drive", "iCloud Drive"},
        {"/h/Library/Mobile Documentsx/a", false, "your cloud drive", "iCloud Drive"},
        {"/h/Library/CloudStorage", true, "your cloud drive", "h"},
        {"/h/Library/CloudStorage/GoogleDrive-me/a", true, "GoogleDrive", "GoogleDrive"},
        {"/h/Library/CloudStorage/Dropbox", true, "Dropbox", "Dropbox"},
        {"/h/Library/CloudStorage/-x", true, "your cloud drive", "x"},
        {"/h/Library/CloudStorage/-", true, "your cloud drive", "-"},
        {"/h/Documents/a", false, "your cloud drive", "h"},
        {"/", false, "your cloud drive", "Cloud"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CloudFiles::isSynced(c.path, "/h"), c.isSynced) << c.path;
        EXPECT_EQ(CloudFiles::providerName(c.path, "/h"), c.name) << c.path;
        EXPECT_EQ(CloudEvictor::provider(c.path, Paths("/h")), c.keeper) << c.path;
    }
    EXPECT_TRUE(CloudFiles::isSynced("~/Library//CloudStorage/./x/", "/h"));
}

TEST(CloudFiles, RemoveTakesThePlaceholderTooAndTellsTheLastError) {
    const test::TemporaryHome home;
    home.file("c/a.txt", "x");
    const auto item = home.cleared("c/a.txt");
    ASSERT_TRUE(item);
    EXPECT_TRUE(CloudFiles::remove(*item, 4));
    EXPECT_FALSE(FS::exists(home.at("c/a.txt")));

    home.file("c/.a.txt.icloud", "");
    EXPECT_TRUE(CloudFiles::isDataless(item->place()));
    EXPECT_TRUE(CloudFiles::remove(*item, 0));
    EXPECT_FALSE(FS::exists(home.at("c/.a.txt.icloud")));
    EXPECT_TRUE(CloudFiles::remove(*item, 1)); // nothing left to do

    // What can never be removed: four rounds with their three pauses.
    home.file("c/a.txt", "x");
    calls::hook = [](calls::Call call) { return call == calls::Call::unlink ? EIO : 0; };
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(CloudFiles::remove(*item, 4).error().code, EIO);
    calls::hook = nullptr;
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1750));
}

TEST(CloudEvictor, RootsAndTools) {
    const test::TemporaryHome home;
    test::ScriptedTools tools;
    home.folder("Library/CloudStorage/Dropbox");
    home.file("Library/CloudStorage/note", "");
    home.link("Library/CloudStorage/Link", home.folder("elsewhere"));
    EXPECT_THAT(CloudEvictor::cloudRoots(home.paths()),
                ElementsAre(home.at("Library/Mobile Documents"), home.at("Library/CloudStorage/Dropbox")));

    const auto permit = RemovalPermit::ask(home.paths(), {});
    const std::string dropbox = home.at("Library/CloudStorage/Dropbox/a");
    const std::string drive = home.at("Library/Mobile Documents/a");
    const auto evict = [&](const std::string& path) {
        const auto done = CloudEvictor::evict(*permit, path, home.paths());
        return done ? "done" : done.error().message;
    };
    for (const char* outside :
         {"Documents/a", "Library/CloudStorage/Link/a", "Library/CloudStorage/DropboxOld"})
        EXPECT_EQ(evict(home.at(outside)), "Not inside iCloud Drive or a cloud storage folder");
    tools.add("fileproviderctl", "exit 0");
    EXPECT_EQ(evict(dropbox), "done");
    EXPECT_THAT(tools.calls("fileproviderctl"), ElementsAre(ElementsAre("evict", dropbox)));
    tools.add("fileproviderctl", "exit 3");
    EXPECT_EQ(evict(dropbox), "Could not remove local copy: provider refused");
    tools.add("fileproviderctl", "printf 'busy' >&2; exit 3");
    EXPECT_EQ(evict(dropbox), "Could not remove local copy: busy");
    tools.add("brctl", "exit 0");
    EXPECT_EQ(evict(drive), "done");
    EXPECT_THAT(tools.calls("brctl"), ElementsAre(ElementsAre("evict", drive)));
    tools.add("brctl", "echo later >&2; exit 1");
    EXPECT_THAT(evict(drive), HasSubstr("Could not remove local copy: "));
    EXPECT_THAT(evict(drive), testing::Not(HasSubstr("later"))); // the first error counts
}
