#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/FileContent.h"
#include "CleanerCore/Platform/Removal.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Support/PathText.h"
#include "tests/Support/FaultRig.h"
#include "tests/Support/Mounted.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Support/Waiting.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

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

// A session's id; the folders of sessions have no other names.
std::string id(char last) {
    return std::string("20260101-000000-00000") + last;
}

std::vector<std::string> messagesOf(const Result<Restored>& restored) {
    if (!restored) return {"refused: " + restored.error().message};
    std::vector<std::string> messages;
    for (const CleanFailure& failure : restored->failures) messages.push_back(failure.message);
    return messages;
}

class QuarantineTest : public testing::Test {
protected:
    void begin(int64_t days = 7) { session = *quarantine.beginSession(ManualTrigger{}, days, start); }
    Status add(const std::string& path) { return addTo(quarantine, path); }
    Status addTo(Quarantine& store, const std::string& path) {
        const auto item = home.cleared(path);
        return item ? store.add(*item, 10, CleanCategory::logs, session) : failed(item.error());
    }
    std::vector<std::string> restore(const std::optional<std::set<std::string>>& entries = std::nullopt) {
        return messagesOf(quarantine.restore(session.id, entries));
    }
    std::string inRoot(const std::string& relative) const {
        return home.at(std::string(root) + "/" + relative);
    }

    const TemporaryHome home;
    Quarantine quarantine{home.paths()};
    QuarantineSession session;
};

} // namespace

TEST_F(QuarantineTest, KeepsItemsUntilTheyAreBroughtBack) {
    begin();
    for (const char* path : {"one/a", "two/a", "three/b"}) {
        ASSERT_TRUE(add(home.file(path, path)));
    }
    EXPECT_EQ(session.entries[1].storedName, "1-a");
    EXPECT_EQ(quarantine.sessions(), std::vector{session}) << "listed while it is being written";
    ASSERT_TRUE(quarantine.finish(session));
    const Json json = *parseJson(*readFile(inRoot(session.id + "/manifest.json")));
    EXPECT_EQ(json["expiresAt"], "2026-01-22T09:30:12Z");
    EXPECT_EQ(json["entries"][2].dump(), R"({"category":"logs","originalPath":")" + home.at("three/b") +
                                             R"(","restored":false,"size":10,"storedName":"2-b"})");
    EXPECT_EQ(quarantine.totalSize(), 30);

    const std::string stored = inRoot(session.id + "/items/2-b");
    fs::remove(home.at("one"));
    const auto restored = quarantine.restore(session.id, std::set<std::string>{"0-a"});
    EXPECT_TRUE(restored && restored->count == 1 && restored->bytes == 10 && restored->failures.empty());
    EXPECT_EQ(quarantine.sessions()[0].activeCount(), 2);
    home.file("two/a", "new");
    fs::remove(stored);
    const std::string taken =
        "Something already exists at " + home.at("two/a") + ". Move it first, then restore.";
    EXPECT_THAT(restore(), ElementsAre(taken, "Quarantined copy is missing: " + stored));
    fs::remove(home.at("two/a"));
    fs::rename(home.file("three/b", ""), stored);
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_FALSE(fs::exists(inRoot(session.id)));
    EXPECT_THAT(test::filesBelow(home.path()), HasSubstr("one/a=one/a\nthree/b=\ntwo/a=two/a\n"));
}

TEST_F(QuarantineTest, PurgesWhatHasExpiredAndSweepsOrphans) {
    begin();
    ASSERT_TRUE(add(home.file("a", "a")));
    ASSERT_TRUE(quarantine.finish(session));
    const Date expiry = addSeconds(start, 7 * 86400);
    const std::string orphan = home.folder(inRoot(id('0')));
    const std::string damaged = parentPath(home.file(inRoot(id('D') + "/manifest.json"), "{"));
    const std::string foreign = home.folder(inRoot("holidays"));
    for (const std::string& child : {orphan, damaged, foreign})
        home.setDates(child, addSeconds(expiry, -86400));
    EXPECT_EQ(quarantine.purgeExpired(addSeconds(expiry, -1)), 0);
    EXPECT_EQ(quarantine.purgeExpired(expiry), 10);
    EXPECT_TRUE(fs::exists(orphan)) << "a day old to the second";
    EXPECT_EQ(quarantine.purgeExpired(addSeconds(expiry, 1)), 0);
    EXPECT_FALSE(fs::exists(orphan));
    EXPECT_TRUE(fs::exists(damaged) && fs::exists(foreign));
    EXPECT_TRUE(quarantine.purge(id('D')));
}

// The user has put a link to a folder of his own in the quarantine's place.
TEST_F(QuarantineTest, HasNoSessionsBehindALink) {
    const std::string mine = home.file("mine/" + id('0') + "/note", "kept");
    session = {id('1'), start, start, ManualTrigger{}, {{home.at("back"), "0-a", 1}}};
    ASSERT_TRUE(JSONStore::save(session, home.at("mine/" + session.id + "/manifest.json")));
    home.file("mine/" + session.id + "/items/0-a", "kept");
    const std::string before = test::filesBelow(home.at("mine"));
    home.link(root, home.at("mine"));
    home.setDates(parentPath(mine), start);
    EXPECT_FALSE(quarantine.check());
    EXPECT_THAT(quarantine.sessions(), testing::IsEmpty());
    EXPECT_THAT(quarantine.unreadable({}), testing::IsEmpty());
    EXPECT_EQ(quarantine.purgeExpired(addSeconds(start, 1e6)), 0);
    EXPECT_FALSE(quarantine.purge(id('1')) || quarantine.restore(id('1'), std::nullopt));
    EXPECT_FALSE(quarantine.beginSession(ManualTrigger{}, 7, start));
    EXPECT_EQ(test::filesBelow(home.at("mine")), before);
}

TEST_F(QuarantineTest, IsWrittenByOneRunAtATime) {
    Quarantine other(home.paths());
    begin(-1);
    EXPECT_EQ(session.expiresAt, start);
    ASSERT_TRUE(add(home.file("a", "a")));
    const auto refused = HasSubstr("written by another run");
    EXPECT_THAT(messagesOf(other.restore(session.id, std::nullopt)), ElementsAre(refused));
    EXPECT_THAT(other.purge(session.id).error().message, refused);
    EXPECT_EQ(other.purgeExpired(start), 0) << "expired at once, but in use";
    const QuarantineSession stale = session;
    ASSERT_TRUE(add(home.file("b", "b")));
    session = stale;
    EXPECT_FALSE(add(home.file("c", "c"))) << "would forget b";
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_THAT(test::filesBelow(home.path()), HasSubstr("a=a\nb=b\nc=c\n"));
}

TEST_F(QuarantineTest, ForeseenItemsMayComeOtherwise) {
    std::vector<ForeseenItem> foreseen;
    for (int i = 0; i < 300; ++i)
        foreseen.push_back({home.file("f/" + std::to_string(i), "x"), 10, CleanCategory::logs});
    {
        Quarantine leaving(home.paths());
        session = *leaving.beginSession(ManualTrigger{}, 7, start);
        leaving.foresee(session, foreseen);
        for (int i = 0; i < 300; ++i) {
            if (i % 70 == 3) fs::remove(foreseen[i].originalPath); // gone meanwhile: its move fails
            if (i % 50 == 7) continue;                             // skipped
            const Status added = addTo(leaving, foreseen[i].originalPath);
            EXPECT_EQ(added.has_value(), i % 70 != 3);
        }
        EXPECT_EQ(leaving.sessions(), std::vector{session});
    } // forgotten to finish
    EXPECT_EQ(quarantine.sessions(), std::vector{session});
    EXPECT_FALSE(fs::exists(inRoot(session.id + "/journal.jsonl")));
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_EQ(std::ranges::count(test::filesBelow(home.at("f")), '\n'), 300 - 5);
}

TEST_F(QuarantineTest, HostileManifestsReachNothing) {
    const TemporaryHome outside;
    outside.file("victim", "kept");
    home.link("way-out", outside.path());
    home.link("way-in", home.folder("inner"));
    home.link("dangling", outside.at("missing"));
    home.link("way-to-keys", home.folder(".gnupg"));
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
        {"0-a", inRoot("new/manifest.json"), "own folder"},
        {"0-a", home.at("way-out/new"), "link that leads elsewhere"},
        {"0-a", home.at("dangling/new"), "leads outside your home folder"},
        {"0-a", home.at("way-out"), "already exists"},
        {"0-a", home.at("dangling"), "already exists"},
        {"0-a", home.at("way-in/deeper/back"), ""},
        {"0-a", home.at(".ssh/authorized_keys"), "ever quarantined from there (Protected personal data)"},
        {"0-a", home.at(".zshrc"), "Protected personal data"},
        {"0-a", home.at("Library/Keychains/login.keychain-db"), "Protected personal data"},
        {"0-a", home.at("Downloads"), "Top-level folder"},
        {"0-a", home.at("way-to-keys/new"), "Protected personal data"},
        {"0-a", outside.at("sub/evil"), "ever quarantined from there (Outside allowed locations)"},
        {"0-a", home.at("Library/CloudStorage/Dropbox/back"), ""},
    };
    for (const auto& [storedName, originalPath, message] : cases) {
        session = {id('A'), start, start, ManualTrigger{}, {{originalPath, storedName, 1}}};
        ASSERT_TRUE(JSONStore::save(session, inRoot(session.id + "/manifest.json")));
        home.file(inRoot(session.id + "/items/0-a"), "content");
        const auto messages = restore();
        EXPECT_EQ(messages.size(), message.empty() ? 0 : 1) << originalPath;
        if (!messages.empty())
            EXPECT_THAT(messages[0], HasSubstr(message)) << storedName << " " << originalPath;
        EXPECT_EQ(test::filesBelow(outside.path()), "victim=kept\n") << originalPath;
    }
    EXPECT_TRUE(fs::exists(home.at("inner/deeper/back")));
    EXPECT_FALSE(fs::exists(home.at(".ssh")) || fs::exists(home.at("Library/Keychains")));
    for (const char* name : {"", ".", "..", "../Quarantine", "/etc", "holidays", "20260101-000000-00000a"}) {
        EXPECT_THAT(messagesOf(quarantine.restore(name, std::nullopt)),
                    ElementsAre(HasSubstr("not the name")));
        EXPECT_FALSE(quarantine.purge(name));
    }
    home.link(inRoot(id('B')), outside.path());
    EXPECT_FALSE(quarantine.purge(id('B')));
    EXPECT_EQ(test::filesBelow(outside.path()), "victim=kept\n");
}

TEST(Quarantine, KeepsWhatItsListDoesNotTell) {
    for (const bool hasJournal : {true, false}) {
        const TemporaryHome home;
        const std::string folder = std::string(root) + "/" + id('0');
        const std::string stored = home.file(folder + "/items/0-a", "a");
        if (hasJournal) home.folder(folder + "/journal.jsonl"); // which cannot be read
        ASSERT_TRUE(JSONStore::save(QuarantineSession{"other", start, start, ManualTrigger{}, {}},
                                    home.at(folder + "/manifest.json")));
        Quarantine quarantine(home.paths());
        const auto messages = messagesOf(quarantine.restore(id('0'), std::nullopt));
        EXPECT_EQ(messages.size(), hasJournal ? 1 : 0);
        EXPECT_TRUE(fs::exists(stored)) << hasJournal;
        if (!hasJournal) EXPECT_EQ(quarantine.sessions().at(0).id, id('0')) << "as its folder is called";
    }
}

TEST_F(QuarantineTest, TakesNothingThatItWouldNotBringBack) {
    const TemporaryHome elsewhere;
    elsewhere.file("Downloads/a", "a");
    home.link("Downloads", elsewhere.at("Downloads"));
    begin();
    EXPECT_THAT(add(home.at("Downloads/a")).error().message, HasSubstr("leads outside your home folder"));
    EXPECT_THAT(add(home.file(".ssh/id", "key")).error().message, HasSubstr("Protected personal data"));
    EXPECT_THAT(add(home.file("bad\xff", "x")).error().message, HasSubstr("not valid text"));
    EXPECT_EQ(test::filesBelow(elsewhere.path()), "Downloads/a=a\n");
    EXPECT_TRUE(fs::exists(home.at(".ssh/id")) && fs::exists(home.at("bad\xff")));
    ASSERT_TRUE(add(home.file(std::string(253, 'n'), "long")));
    EXPECT_THAT(restore(), ElementsAre());
}

TEST_F(QuarantineTest, TakesNoFolderWithAVolumeMountedBelow) {
    const std::string file = home.file("documents/file", "kept");
    const test::Mounted mounted("--bind " + home.at("documents"), home.folder("cache/deeper/bound"));
    if (!mounted.done) GTEST_SKIP() << "needs root";
    begin();
    EXPECT_THAT(add(home.at("cache")).error().message, HasSubstr("another volume is mounted there"));
    EXPECT_TRUE(fs::exists(home.at("cache/deeper/bound/file")));
}

TEST_F(QuarantineTest, BringsBackToAHomeThatIsReachedByALink) {
    const TemporaryHome elsewhere;
    const Paths linked(elsewhere.link("linked", home.path()));
    Quarantine store(linked);
    session = *store.beginSession(ManualTrigger{}, 7, start);
    const std::string path = home.file("new/a", "a");
    const auto judged = RemovalPermit::ask(linked, {})->judge(linked.home() + "/new/a");
    ASSERT_TRUE(store.add(*judged.item, 1, CleanCategory::logs, session));
    fs::remove(home.at("new"));
    EXPECT_THAT(messagesOf(store.restore(session.id, std::nullopt)), ElementsAre());
    EXPECT_TRUE(fs::exists(path));
}

TEST_F(QuarantineTest, ListsSessionsOfOneSecondInTheOrderOfTheirMaking) {
    if (!linkStatus(home.path())->created) GTEST_SKIP() << "needs a file system that keeps such dates";
    std::vector<std::string> made;
    for (int i = 0; i < 6; ++i) {
        begin();
        made.insert(made.begin(), session.id);
        for (const char* name : {"a", "b"}) ASSERT_TRUE(add(home.file(session.id + name, "x")));
        ASSERT_TRUE(quarantine.finish(session));
        // The clock of some file systems is coarse.
        const auto created = linkStatus(inRoot(session.id))->created;
        ASSERT_TRUE(test::comesTrue([&] {
            fs::remove(home.at("clock"));
            return linkStatus(home.file("clock", ""))->created > created;
        }));
    }
    session.id = made.back();
    EXPECT_THAT(restore(std::set<std::string>{"0-a"}), ElementsAre());
    std::vector<std::string> listed;
    for (const QuarantineSession& each : quarantine.sessions()) listed.push_back(each.id);
    EXPECT_EQ(listed, made);
}

TEST_F(QuarantineTest, PurgesWhatCannotBeRead) {
    const auto put = [&](char last, const std::string& name) { return inRoot(id(last) + "/" + name); };
    home.file(put('0', "manifest.json"), "{");
    home.file(put('1', "manifest.json"), R"({"createdAt":"x"})");
    home.folder(inRoot(id('2')));
    ASSERT_EQ(::mkfifo(put('2', "manifest.json").c_str(), 0600), 0);
    for (const char last : {'3', '4'}) {
        session = {id(last), start, start, ManualTrigger{}, {{home.at("a"), "0-a", 1}}};
        ASSERT_TRUE(JSONStore::save(session, put(last, "manifest.json")));
    }
    ASSERT_EQ(::mkfifo(put('3', "journal.jsonl").c_str(), 0600), 0);
    const TemporaryHome outside;
    outside.file("0-a", "kept");
    home.link(put('4', "items"), outside.path());
    home.file(inRoot("no folder"), "");
    EXPECT_THAT(restore(), ElementsAre(HasSubstr("Quarantined copy is missing")));
    const auto listed = quarantine.sessions();
    ASSERT_EQ(listed.size(), 1);
    const auto unreadable = quarantine.unreadable(listed);
    EXPECT_THAT(unreadable, ElementsAre(id('0'), id('1'), id('2'), id('3')));
    EXPECT_EQ(quarantine.restore(id('0'), std::nullopt)->count, 0);
    for (const std::string& name : unreadable) EXPECT_TRUE(quarantine.purge(name)) << name;
    EXPECT_EQ(quarantine.purgeExpired(start), 1);
    EXPECT_EQ(test::filesBelow(home.at(root)), "no folder=\n");
    EXPECT_EQ(test::filesBelow(outside.path()), "0-a=kept\n");
}

TEST_F(QuarantineTest, ShowsNothingToOtherUsers) {
    const mode_t former = ::umask(0);
    home.file(inRoot(id('0') + "/manifest.json"), "{"); // as an earlier version left it
    home.file(inRoot(id('0') + "/items/0-a"), "");
    home.file("Library/Application Support/Ostrel Loftmere/audit.jsonl", "");
    ASSERT_TRUE(home.paths().ensureSupportDirs());
    const FileLock lock = *FileLock::acquire(home.paths().lockFile());
    Cleaner cleaner(home.paths(), {});
    const auto item = ScanItem::make({.target = PathTarget{home.file("Downloads/a", "a")}});
    EXPECT_EQ(cleaner.clean({item}, ManualTrigger{}, false, Disposal::quarantine).itemsProcessed, 1);
    ASSERT_TRUE(ConfigStore(home.paths()).save({}));
    ::umask(former);
    const fs::perms others = fs::perms::group_all | fs::perms::others_all;
    for (const auto& entry : fs::recursive_directory_iterator(home.paths().supportDir())) {
        const bool isOurs = parentPath(entry.path().string()).find("/items") == std::string::npos &&
                            entry.path().filename() != "agent.lock";
        EXPECT_EQ((entry.status().permissions() & others) == fs::perms::none, isOurs) << entry.path();
    }
    for (const std::string& folder : {home.paths().supportDir(), home.at("Library/Logs/Ostrel Loftmere")})
        EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
}

// Files as this program has written them ever since: a key that is spelt otherwise makes them unreadable.
TEST_F(QuarantineTest, ReadsItsFilesToTheLetter) {
    home.file(
        inRoot(id('0') + "/manifest.json"),
        R"({"createdAt":"2026-01-15T09:30:12Z","expiresAt":"2026-01-22T09:30:12Z","id":"other","entries":[)"
        R"({"category":"installers","originalPath":"/a.dmg","restored":true,"size":5,"storedName":"0-a.dmg"}],)"
        R"("trigger":{"schedule":{"ruleName":"Weekly"}}})");
    const QuarantineEntry entry{"/a.dmg", "0-a.dmg", 5, CleanCategory::installers, true};
    const Date expiry = addSeconds(start, 7 * 86400);
    EXPECT_EQ(quarantine.sessions(),
              (std::vector<QuarantineSession>{{id('0'), start, expiry, ScheduleTrigger{"Weekly"}, {entry}}}));
    const auto journal = QuarantineJournal::parse(
        R"({"category":"installers","originalPath":"/a.dmg","restored":true,"size":5,"storedName":"0-a.dmg"})"
        "\n{\"restoring\":\"1-b\"}\n{\"category\":\"lo");
    EXPECT_EQ(journal.arriving, std::vector{entry});
    EXPECT_THAT(journal.restoring, ElementsAre("1-b"));
}

TEST_F(QuarantineTest, KnowsWhatAnUndoBroughtBackThatCouldNotWriteItDown) {
    begin();
    for (const char* name : {"a", "b"}) ASSERT_TRUE(add(home.file(name, name)));
    ASSERT_TRUE(quarantine.finish(session));
    const QuarantineSession held = session;
    EXPECT_THAT(restore(std::set<std::string>{"0-a"}), ElementsAre());
    ASSERT_TRUE(JSONStore::save(held, inRoot(held.id + "/manifest.json"))); // as before the undo
    EXPECT_EQ(quarantine.sessions().at(0).activeCount(), 1);
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_FALSE(fs::exists(inRoot(held.id)));
}

namespace {

std::string renameFrom, renameTo;

// The next rename is done and reported as failed.
int renamesAndFails(calls::Call call) {
    if (call != calls::Call::rename || renameFrom.empty()) return 0;
    fs::rename(std::exchange(renameFrom, ""), renameTo);
    return EIO;
}

} // namespace

TEST_F(QuarantineTest, BelievesTheDiskAboutARename) {
    begin();
    const std::string path = home.file("a", "a");
    const std::string stored = inRoot(session.id + "/items/0-a");
    renameFrom = path;
    renameTo = stored;
    calls::hook = renamesAndFails;
    EXPECT_TRUE(add(path));
    calls::hook = nullptr;
    ASSERT_TRUE(quarantine.finish(session));
    EXPECT_EQ(quarantine.totalSize(), 10);
    renameFrom = stored;
    renameTo = path;
    calls::hook = renamesAndFails;
    EXPECT_THAT(restore(), ElementsAre());
    calls::hook = nullptr;
    EXPECT_FALSE(fs::exists(inRoot(session.id)));
}

TEST_F(QuarantineTest, MakesParentsAgainThatAreDeeperThanPathsMayBe) {
    begin();
    Place place = *Place::open(home.at("deep"));
    for (int i = 0; i < 40; ++i) place = place.asFolder(Place::Missing::create)->entry(std::string(200, 'd'));
    ASSERT_TRUE(moveItem(*Place::open(home.file("a", "a")), place));
    ASSERT_TRUE(add(place.realPath()));
    ASSERT_TRUE(removeItem(*Place::open(home.at("deep"))));
    EXPECT_THAT(restore(), ElementsAre());
    EXPECT_TRUE(Place::open(place.realPath())->status());
}

TEST_F(QuarantineTest, MovesAndDeletesOnAFullDisk) {
    const std::string image = home.file("image", "");
    if (std::system(("truncate -s 64M " + image + " && mkfs.ext4 -q -m 0 " + image).c_str()) != 0)
        GTEST_SKIP() << "needs mkfs.ext4";
    for (const std::string& type : {std::string("-t tmpfs -o size=64m none"), "-o loop " + image}) {
        const test::Mounted disk(type, home.folder("disk"));
        if (!disk.done) GTEST_SKIP() << "needs root";
        const Paths paths(disk.path);
        ASSERT_TRUE(paths.ensureSupportDirs());
        (void)Quarantine(paths).purgeExpired(start); // what every tick of the agent does in good times
        std::vector<ScanItem> items;
        for (const char* path : {"disk/old", "disk/junk/big"}) {
            items.push_back(
                ScanItem::make({.target = PathTarget{home.fileOfSize(path, 100000)}, .size = 10}));
        }
        std::ofstream filler(home.at("disk/filler"), std::ios::binary);
        while (filler.write(std::string(4096, 'f').data(), 4096).flush()) {
        }
        filler.close();
        ASSERT_FALSE(replaceFile(home.at("disk/probe"), std::string(8192, 'p'))) << "the disk is full";

        Cleaner cleaner(paths, {});
        const CleanReport kept = cleaner.clean({items[0]}, ManualTrigger{}, false, Disposal::quarantine);
        EXPECT_EQ(kept.quarantinedBytes, 10) << type;
        EXPECT_EQ(cleaner.clean({items[1]}, ManualTrigger{}, false, Disposal::remove).freedBytes, 10) << type;
        EXPECT_FALSE(fs::exists(home.at("disk/old")) || fs::exists(home.at("disk/junk/big")));
        EXPECT_THAT(messagesOf(cleaner.restore(*kept.quarantineSessionID, std::nullopt)), ElementsAre());
        EXPECT_EQ(fs::file_size(home.at("disk/old")), 100000);
    }
}
