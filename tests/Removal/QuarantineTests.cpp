#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Quarantine.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/TemporaryHome.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

using namespace loftmere;
using test::TemporaryHome;
using testing::ElementsAre;
using testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

const Date start = *fromISO8601("2026-01-15T09:30:12Z");
constexpr const char* root = "Library/Application Support/Ostrel Loftmere/Quarantine";

QuarantineSession begin(Quarantine& quarantine) {
    return *quarantine.beginSession(ManualTrigger{}, 7, start);
}

Status addFile(Quarantine& quarantine, const std::string& path, QuarantineSession& session) {
    return quarantine.add(path, 10, CleanCategory::logs, session);
}

// Ends a mount with its scope.
struct Mounted {
    explicit Mounted(std::string at) : path(std::move(at)) {}
    ~Mounted() { ::umount2(path.c_str(), MNT_DETACH); }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    std::string path;
};

std::vector<std::string> messagesOf(const Result<std::vector<CleanFailure>>& failures) {
    if (!failures) return {"refused: " + failures.error().message};
    std::vector<std::string> messages;
    for (const CleanFailure& failure : *failures) messages.push_back(failure.message);
    return messages;
}

} // namespace

TEST(Quarantine, KeepsItemsUntilTheyAreBroughtBack) {
    const TemporaryHome home;
    Quarantine quarantine(home.paths());
    QuarantineSession session = begin(quarantine);
    for (const char* path : {"one/a", "two/a", "three/b"}) {
        ASSERT_TRUE(addFile(quarantine, home.file(path, path), session));
    }
    EXPECT_EQ(session.entries[1].storedName, "1-a");
    EXPECT_EQ(quarantine.sessions(), std::vector{session}) << "listed while it is being written";
    ASSERT_TRUE(quarantine.finish(session));
    const std::string manifest = home.at(std::string(root) + "/" + session.id + "/manifest.json");
    const Json json = *parseJson(*readFile(manifest));
    EXPECT_EQ(json["expiresAt"], "2026-01-22T09:30:12Z");
    EXPECT_EQ(json["entries"][2].dump(), R"({"category":"logs","originalPath":")" + home.at("three/b") +
                                             R"(","restored":false,"size":10,"storedName":"2-b"})");
    EXPECT_EQ(quarantine.totalSize(), 30);

    fs::remove(home.at("one"));
    EXPECT_THAT(messagesOf(quarantine.restore(session.id, std::set<std::string>{"0-a"})), ElementsAre());
    EXPECT_EQ(quarantine.sessions()[0].activeCount(), 2);
    home.file("two/a", "new");
    fs::remove(home.at(std::string(root) + "/" + session.id + "/items/2-b"));
    EXPECT_THAT(
        messagesOf(quarantine.restore(session.id, std::nullopt)),
        ElementsAre("Something already exists at " + home.at("two/a") + ". Move it first, then restore.",
                    "Quarantined copy is missing: " + home.at(root) + "/" + session.id + "/items/2-b"));
    fs::remove(home.at("two/a"));
    home.file("three/b", "");
    fs::rename(home.at("three/b"), home.at(std::string(root) + "/" + session.id + "/items/2-b"));
    EXPECT_THAT(messagesOf(quarantine.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_THAT(messagesOf(quarantine.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_FALSE(fs::exists(home.at(std::string(root) + "/" + session.id)));
    EXPECT_THAT(test::filesBelow(home.path()), HasSubstr("one/a=one/a\nthree/b=\ntwo/a=two/a\n"));
}

TEST(Quarantine, PurgesWhatHasExpiredAndSweepsOrphans) {
    const TemporaryHome home;
    Quarantine quarantine(home.paths());
    QuarantineSession session = begin(quarantine);
    ASSERT_TRUE(addFile(quarantine, home.file("a", "a"), session));
    ASSERT_TRUE(quarantine.finish(session));
    const Date expiry = addSeconds(start, 7 * 86400);
    home.folder(std::string(root) + "/orphan");
    home.file(std::string(root) + "/damaged/manifest.json", "{");
    for (const char* child : {"/orphan", "/damaged"})
        home.setDates(root + std::string(child), addSeconds(expiry, -86400));
    EXPECT_EQ(quarantine.purgeExpired(addSeconds(expiry, -1)), 0);
    EXPECT_EQ(quarantine.purgeExpired(expiry), 10);
    EXPECT_TRUE(fs::exists(home.at(root + std::string("/orphan")))) << "a day old to the second";
    EXPECT_EQ(quarantine.purgeExpired(addSeconds(expiry, 1)), 0);
    EXPECT_FALSE(fs::exists(home.at(root + std::string("/orphan"))));
    EXPECT_TRUE(fs::exists(home.at(root + std::string("/damaged"))));
    EXPECT_TRUE(quarantine.purge("damaged"));
}

TEST(Quarantine, IsWrittenByOneRunAtATime) {
    const TemporaryHome home;
    Quarantine writing(home.paths());
    Quarantine other(home.paths());
    QuarantineSession session = *writing.beginSession(ManualTrigger{}, 0, start);
    ASSERT_TRUE(addFile(writing, home.file("a", "a"), session));
    EXPECT_THAT(messagesOf(other.restore(session.id, std::nullopt)),
                ElementsAre(HasSubstr("written by another run")));
    EXPECT_THAT(other.purge(session.id).error().message, HasSubstr("written by another run"));
    EXPECT_EQ(other.purgeExpired(start), 0) << "expired at once, but in use";
    QuarantineSession stale = session;
    ASSERT_TRUE(addFile(writing, home.file("b", "b"), session));
    EXPECT_FALSE(addFile(writing, home.file("c", "c"), stale)) << "would forget b";
    EXPECT_THAT(messagesOf(writing.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_THAT(test::filesBelow(home.path()), HasSubstr("a=a\nb=b\nc=c\n"));
}

TEST(Quarantine, ForeseenItemsMayComeOtherwise) {
    const TemporaryHome home;
    std::vector<ForeseenItem> foreseen;
    for (int i = 0; i < 300; ++i)
        foreseen.push_back({home.file("f/" + std::to_string(i), "x"), 10, CleanCategory::logs});
    QuarantineSession session;
    {
        Quarantine quarantine(home.paths());
        session = begin(quarantine);
        quarantine.foresee(session, foreseen);
        for (int i = 0; i < 300; ++i) {
            if (i % 70 == 3) fs::remove(foreseen[i].originalPath); // gone meanwhile: its move fails
            if (i % 50 == 7) continue;                             // skipped
            const bool added = addFile(quarantine, foreseen[i].originalPath, session).has_value();
            EXPECT_EQ(added, i % 70 != 3);
        }
        EXPECT_EQ(quarantine.sessions(), std::vector{session});
    } // forgotten to finish
    Quarantine later(home.paths());
    EXPECT_EQ(later.sessions(), std::vector{session});
    EXPECT_FALSE(fs::exists(home.at(std::string(root) + "/" + session.id + "/journal.jsonl")));
    EXPECT_THAT(messagesOf(later.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_EQ(std::ranges::count(test::filesBelow(home.at("f")), '\n'), 300 - 5);
}

TEST(Quarantine, RefusesWhatCannotComeBack) {
    const TemporaryHome home;
    Quarantine quarantine(home.paths());
    QuarantineSession session = begin(quarantine);
    const std::string invalid = home.file("bad\xff", "x");
    EXPECT_THAT(addFile(quarantine, invalid, session).error().message, HasSubstr("not valid text"));
    EXPECT_TRUE(fs::exists(invalid));
    ASSERT_TRUE(addFile(quarantine, home.file(std::string(253, 'n'), "long"), session));
    EXPECT_THAT(messagesOf(quarantine.restore(session.id, std::nullopt)), ElementsAre());
    home.folder("other");
    if (::mount("none", home.at("other").c_str(), "tmpfs", 0, nullptr) != 0) GTEST_SKIP() << "needs root";
    session = begin(quarantine);
    EXPECT_EQ(addFile(quarantine, home.file("other/file", "x"), session).error().message,
              "file is on another drive — quarantining it would copy the whole file onto this Mac");
    ::umount(home.at("other").c_str());
}

TEST(Quarantine, HostileManifestsReachNothing) {
    const TemporaryHome home;
    const TemporaryHome outside;
    outside.file("victim", "kept");
    home.link("way-out", outside.path());
    home.link("way-in", home.folder("inner"));
    home.link("dangling", outside.at("missing"));
    const struct {
        std::string storedName, originalPath, message;
    } cases[] = {
        {"../../../x", home.at("back"), "missing"},
        {"..", home.at("back"), "missing"},
        {"", home.at("back"), "missing"},
        {std::string("0-a\0", 4), home.at("back"), "missing"},
        {"0-a", "relative/path", "not a plain full path"},
        {"0-a", home.at("x/../y"), "not a plain full path"},
        {"0-a", home.at("x//y"), "not a plain full path"},
        {"0-a", "/", "not a plain full path"},
        {"0-a", home.at(std::string(root) + "/new/manifest.json"), "own folder"},
        {"0-a", home.at("way-out/new"), "link that leads elsewhere"},
        {"0-a", home.at("dangling/new"), "Not a directory"},
        {"0-a", home.at("way-out"), "already exists"},
        {"0-a", home.at("dangling"), "already exists"},
        {"0-a", home.at("way-in/deeper/back"), ""},
    };
    for (const auto& [storedName, originalPath, message] : cases) {
        QuarantineSession session{"hostile", start, start, ManualTrigger{}, {{originalPath, storedName, 1}}};
        ASSERT_TRUE(JSONStore::save(session, home.at(std::string(root) + "/hostile/manifest.json")));
        home.file(std::string(root) + "/hostile/items/0-a", "content");
        Quarantine quarantine(home.paths());
        const auto messages = messagesOf(quarantine.restore("hostile", std::nullopt));
        EXPECT_EQ(messages.size(), message.empty() ? 0 : 1) << originalPath;
        if (!messages.empty())
            EXPECT_THAT(messages[0], HasSubstr(message)) << storedName << " " << originalPath;
        EXPECT_EQ(test::filesBelow(outside.path()), "victim=kept\n") << originalPath;
    }
    EXPECT_TRUE(fs::exists(home.at("inner/deeper/back")));
    Quarantine quarantine(home.paths());
    for (const char* id : {"", ".", "..", "../Quarantine", "/etc"}) {
        EXPECT_THAT(messagesOf(quarantine.restore(id, std::nullopt)), ElementsAre(HasSubstr("not the name")));
        EXPECT_FALSE(quarantine.purge(id));
    }
    home.link(std::string(root) + "/linked", outside.path());
    EXPECT_FALSE(quarantine.purge("linked"));
    EXPECT_EQ(test::filesBelow(outside.path()), "victim=kept\n");
}

TEST(Quarantine, KeepsWhatItsListDoesNotTell) {
    for (const bool hasJournal : {true, false}) {
        const TemporaryHome home;
        const std::string folder = std::string(root) + "/session";
        const std::string stored = home.file(folder + "/items/0-a", "a");
        if (hasJournal) home.folder(folder + "/journal.jsonl"); // which cannot be read
        ASSERT_TRUE(JSONStore::save(QuarantineSession{"other", start, start, ManualTrigger{}, {}},
                                    home.at(folder + "/manifest.json")));
        Quarantine quarantine(home.paths());
        const auto messages = messagesOf(quarantine.restore("session", std::nullopt));
        EXPECT_EQ(messages.size(), hasJournal ? 1 : 0);
        EXPECT_TRUE(fs::exists(stored)) << hasJournal;
        if (!hasJournal) EXPECT_EQ(quarantine.sessions().at(0).id, "session") << "as its folder is called";
    }
}

TEST(Quarantine, BringsBackWhatWasReachedByALinkOutOfTheHome) {
    const TemporaryHome home;
    const TemporaryHome elsewhere;
    elsewhere.file("Downloads/a", "a");
    home.link("Downloads", elsewhere.at("Downloads"));
    Quarantine quarantine(home.paths());
    QuarantineSession session = begin(quarantine);
    ASSERT_TRUE(addFile(quarantine, home.at("Downloads/a"), session));
    EXPECT_THAT(messagesOf(quarantine.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_EQ(test::filesBelow(elsewhere.path()), "Downloads/a=a\n");
}

TEST(Quarantine, MovesAndDeletesOnAFullDisk) {
    const TemporaryHome home;
    for (const char* type : {"tmpfs", "ext4"}) {
        const std::string image = std::string("mkfs.ext4 -q -m 0 ") + home.file("image", "") +
                                  " 64M && mount -o loop " + home.at("image") + " " + home.folder("disk");
        const bool isMemory = std::string_view(type) == "tmpfs";
        const int answer = isMemory ? ::mount("none", home.folder("disk").c_str(), type, 0, "size=64m")
                                    : std::system(image.c_str()); // NOLINT(concurrency-mt-unsafe)
        if (answer != 0) GTEST_SKIP() << "needs root";
        const Mounted mounted(home.at("disk"));
        const Paths paths(mounted.path);
        {
            Quarantine quarantine(paths);
            ASSERT_TRUE(paths.ensureSupportDirs());
            (void)quarantine.purgeExpired(start); // what every tick of the agent does in good times
            home.file("disk/old", std::string(100000, 'x'));
            home.file("disk/junk/big", std::string(1000000, 'x'));
            std::ofstream filler(home.at("disk/filler"), std::ios::binary);
            while (filler.write(std::string(4096, 'f').data(), 4096).flush()) {
            }
            filler.close();
            ASSERT_FALSE(replaceFile(home.at("disk/probe"), std::string(8192, 'p'))) << "the disk is full";
            auto session = quarantine.beginSession(ManualTrigger{}, 7, start);
            ASSERT_TRUE(session) << type << ": " << session.error().message;
            const Status added = addFile(quarantine, home.at("disk/old"), *session);
            EXPECT_TRUE(added) << type << ": " << added.error().message;
            EXPECT_TRUE(quarantine.finish(*session)) << type;
            EXPECT_EQ(quarantine.totalSize(), 10);
            EXPECT_TRUE(removeItem(*Place::open(home.at("disk/junk"))));
            EXPECT_FALSE(fs::exists(home.at("disk/junk")));
            EXPECT_THAT(messagesOf(quarantine.restore(session->id, std::nullopt)), ElementsAre());
            EXPECT_EQ(fs::file_size(home.at("disk/old")), 100000);
        }
    }
}
