#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "CleanerCore/Removal/Quarantine/Quarantine.h"
#include "CleanerCore/Support/Json.h"
#include "CleanerCore/Support/Text.h"
#include "tests/Support/Mounted.h"
#include "tests/Support/TemporaryHome.h"
#include "tests/Terminal/TerminalRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>

using namespace loftmere;
using namespace loftmere::test;
using testing::HasSubstr;
using testing::Not;

namespace {

// A home with one thing of each kind: a cache (deleted, ticked), a thrown-away file (deleted, not ticked) and
// an old download (quarantined, not ticked).
class TerminalClean : public testing::Test {
protected:
    void SetUp() override {
        home.fileOfSize("Library/Caches/com.example/data", 100'000);
        home.setAgeDays("Library/Caches/com.example", 2);
        home.file(".Trash/thrown.txt", "x");
        home.file("Downloads/manual.pdf", "x");
        home.setAgeDays("Downloads/manual.pdf", 400);
    }
    Shell::Result run(const std::vector<std::string>& arguments) {
        return runTerminal(home.path(), arguments);
    }
    Json json(std::vector<std::string> arguments) {
        arguments.emplace_back("--json");
        return parseJson(run(arguments).out).value_or(Json());
    }
    bool stands(const std::string& relative) { return FS::exists(home.at(relative)); }
    bool allStands() {
        return stands("Library/Caches/com.example") && stands(".Trash/thrown.txt") && stands(download);
    }

    const std::string download = "Downloads/manual.pdf";
    TemporaryHome home;
};

} // namespace

TEST_F(TerminalClean, ChangesNothingUnlessToldTo) {
    const std::vector<std::string> refused[]{{"clean"},
                                             {"clean", "--json", "--all"},
                                             {"clean", "bogus", "--yes"},
                                             {"clean", "--all", "--select", "x", "--yes"}};
    for (const auto& arguments : refused)
        EXPECT_EQ(run(arguments).status, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(run({"clean", "--dry-run"}).status, 0);
    EXPECT_EQ(run({"clean", "--all", "--dry-run", "--yes"}).status, 0);
    EXPECT_TRUE(allStands());
    home.file("Library/Application Support/Ostrel Loftmere/config.json", "{\"protectedPaths\": [");
    const auto blind = run({"clean", "--all", "--yes"});
    EXPECT_EQ(blind.status, 1);
    EXPECT_THAT(blind.err, HasSubstr("config.json cannot be read; what you protect"));
    EXPECT_TRUE(allStands());
    EXPECT_FALSE(stands("Library/Application Support/Ostrel Loftmere/audit.jsonl"));
}

TEST_F(TerminalClean, PreviewTellsOfEachItemWhatTheCleanThenDoes) {
    home.file("Library/Application Support/Ostrel Loftmere/config.json",
              R"({"quarantineRetentionDays": -1})");
    EXPECT_THAT(run({"clean", "--all", "--dry-run"}).out, HasSubstr("can be restored for 0 days."));
    home.file("Library/Application Support/Ostrel Loftmere/config.json", "{}");
    const auto preview = run({"clean", "--all", "--dry-run"});
    const std::string removed = preview.out.substr(0, preview.out.find("Quarantine (undo)"));
    EXPECT_THAT(removed, HasSubstr("Delete immediately"));
    EXPECT_THAT(removed, HasSubstr("~/Library/Caches/com.example"));
    EXPECT_THAT(removed, HasSubstr("~/.Trash/thrown.txt"));
    EXPECT_THAT(preview.out.substr(removed.size()), HasSubstr("~/Downloads/manual.pdf"));
    EXPECT_THAT(preview.out, HasSubstr("Quarantined items can be restored for 7 days."));
    EXPECT_THAT(preview.out, HasSubstr("Would free "));

    const Json planned = json({"clean", "--all", "--dry-run"});
    const Json report = json({"clean", "--all", "--yes"});
    EXPECT_EQ(planned["freedBytes"], report["freedBytes"]);
    EXPECT_EQ(planned["quarantinedBytes"], report["quarantinedBytes"]);
    EXPECT_EQ(planned["itemsProcessed"], 0);
    EXPECT_FALSE(planned.contains("quarantineSessionID"));
    EXPECT_EQ(report["itemsProcessed"], 3);
    EXPECT_EQ(report["quarantineSessionID"], Quarantine(home.paths()).sessions().at(0).id);
    EXPECT_FALSE(stands("Library/Caches/com.example") || stands(".Trash/thrown.txt") || stands(download));
}

TEST_F(TerminalClean, ActsOnWhatIsTickedOrOnTheIdsThatWereChosen) {
    const auto ticked = run({"clean", "--yes"});
    EXPECT_EQ(ticked.status, 0);
    EXPECT_THAT(ticked.out, HasSubstr("Freed "));
    EXPECT_FALSE(stands("Library/Caches/com.example"));
    EXPECT_TRUE(stands(".Trash/thrown.txt") && stands(download));

    const auto chosen =
        run({"clean", "personal", "--select", home.at(download), "--select", "/none\x1B[2J", "--yes"});
    EXPECT_EQ(chosen.status, 1); // one of them was not found
    EXPECT_THAT(chosen.err, HasSubstr("no scan found \"/none\u241B[2J\""));
    EXPECT_THAT(chosen.out, HasSubstr("loftmere undo "));
    EXPECT_FALSE(stands(download));
    EXPECT_TRUE(stands(".Trash/thrown.txt"));
}

TEST_F(TerminalClean, AsksAPersonAndTakesNoForAnAnswer) {
    TerminalScreen asked(home.path(), {"clean", "trash", "--all", "--json"}, 80);
    EXPECT_THAT(asked.waitFor("[y/N] "), HasSubstr("Delete immediately"));
    asked.type("n\n");
    const auto refused = asked.finish();
    EXPECT_EQ(refused.status, 0);
    EXPECT_THAT(refused.out, HasSubstr("\"freedBytes\": 0"));
    EXPECT_TRUE(stands(".Trash/thrown.txt"));

    const struct {
        const char* typed;
        int status;
        bool stays;
    } answers[]{{"\n", 0, true}, {"\x03", 130, true}, {"y\n", 0, false}};
    for (const auto& [typed, status, stays] : answers) {
        TerminalScreen screen(home.path(), {"clean", "trash", "--all"}, 80);
        EXPECT_THAT(screen.waitFor("[y/N] "), HasSubstr("Clean 1 item ("));
        screen.type(typed);
        const auto done = screen.finish();
        EXPECT_EQ(done.status, status);
        EXPECT_EQ(done.out.contains("Freed "), !stays);
        EXPECT_EQ(stands(".Trash/thrown.txt"), stays);
    }
}

TEST_F(TerminalClean, ThePreviewIsOnTheScreenBeforeAnythingIsDoneAndNothingIsAskedInVain) {
    const std::string out = home.at("out");
    const Words redirected{"sh", "-c", "exec \"$0\" \"$@\" > '" + out + "'"};
    for (int i = 0; i < 20; ++i) home.file(".Trash/" + std::to_string(i), "");
    TerminalScreen asked(home.path(), {"clean", "trash", "--all"}, 80, redirected);
    EXPECT_THAT(asked.waitFor("[y/N] "), HasSubstr("+ 6 more"));
    asked.type("n\n");
    asked.finish();
    const auto listed =
        TerminalScreen(home.path(), {"clean", "trash", "--all", "--yes", "--json", "--verbose"}, 80,
                       redirected)
            .finish();
    EXPECT_THAT(listed.out, HasSubstr("~/.Trash/19\n"));

    // A file that the user protects: nothing can be done, so nothing is asked, and nothing is logged.
    home.file(".Trash/kept", "x");
    home.file("Library/Application Support/Ostrel Loftmere/config.json",
              "{\"protectedPaths\": [\"" + home.at(".Trash/kept") + "\"]}");
    const size_t logged = AuditLog(home.paths()).recent(100).size();
    const auto vain = TerminalScreen(home.path(), {"clean", "trash", "--all"}, 80).finish();
    EXPECT_THAT(vain.out, Not(HasSubstr("[y/N]")));
    EXPECT_EQ(AuditLog(home.paths()).recent(100).size(), logged);
}

TEST_F(TerminalClean, EveryStopSignalStopsBetweenTwoItemsAndTheLogTellsOfThoseBefore) {
    constexpr size_t count = 8'000;
    for (size_t i = 0; i < count; ++i) home.file(".Trash/" + std::to_string(i), "");
    size_t before = FS::children(home.at(".Trash")).size();
    size_t logged = 0;
    for (const auto& [number, status] :
         {std::pair(0, 130), std::pair(SIGTERM, 143), std::pair(SIGHUP, 129)}) {
        TerminalScreen screen(home.path(), {"clean", "trash", "--all", "--yes"}, 80);
        EXPECT_THAT(screen.waitFor(" %  Cleaning"), HasSubstr("Delete immediately")); // the preview
        if (number == 0)
            screen.type("\x03\x03"); // the second one waits for the log as well
        else
            screen.signal(number);
        EXPECT_EQ(screen.finish().status, status);
        const size_t left = FS::children(home.at(".Trash")).size();
        EXPECT_TRUE(left > 0 && left < before) << left;
        logged += before - left;
        EXPECT_EQ(AuditLog(home.paths()).recent(2 * count).size(), logged);
        before = left;
    }
}

TEST_F(TerminalClean, UndoBringsBackAndSessionsHistoryAndPurgeTellTheTruth) {
    EXPECT_EQ(run({"undo"}).status, 1);
    const std::string second = "Downloads/second\x1B.pdf";
    home.file(second, std::string(9000, 'y')); // the larger comes first
    home.setAgeDays(second, 300);
    const std::string id = json({"clean", "oldDownloads", "--all", "--yes"})["quarantineSessionID"];
    const Json listed = json({"sessions"});
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0]["id"], id);
    EXPECT_EQ(listed[0]["entries"].size(), 2U);
    const std::string stored = printable(listed[0]["entries"][0]["storedName"].get<std::string>());
    EXPECT_THAT(run({"sessions"}).out, HasSubstr(stored));

    EXPECT_EQ(run({"undo", "none"}).status, 1);
    EXPECT_EQ(run({"undo", id, "--entry", "9-none"}).status, 1);
    const Json undone = json({"undo", "--entry", stored});
    EXPECT_EQ(undone, Json({{"session", id}, {"failures", Json::array()}}));
    EXPECT_TRUE(stands(second) && !stands(download));

    const std::string blocked = listed[0]["entries"][1]["originalPath"];
    home.file(blocked, "in the way");
    const auto refused = run({"undo", id});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.out, HasSubstr("Something already exists at "));
    EXPECT_EQ(json({"undo", id})["failures"][0]["itemID"], blocked);

    EXPECT_EQ(json({"purge", id})["session"], id);
    EXPECT_EQ(run({"purge", id}).status, 1);
    EXPECT_EQ(json({"sessions"}), Json::array());

    const Json history = json({"history", "--limit", "2"});
    ASSERT_EQ(history.size(), 2U);
    EXPECT_EQ(history[0]["action"], "purge");
    EXPECT_EQ(history[0]["target"], id);
    EXPECT_EQ(history[1]["action"], "restore");
    EXPECT_EQ(history[1]["success"], false);
    EXPECT_THAT(run({"history"}).out, HasSubstr("not done: 1 item(s) could not be restored"));
    EXPECT_EQ(run({"history", "--limit", "-1"}).status, 2);
}

TEST_F(TerminalClean, SessionsThatCannotBeReadAreNamedAndPurged) {
    home.file("Library/Application Support/Ostrel Loftmere/Quarantine/20260101-000000-00000D/manifest.json",
              "{");
    for (const char* verb : {"sessions", "undo"})
        EXPECT_THAT(run({verb}).err, HasSubstr("cannot be read: 20260101-000000-00000D in ~/Library"))
            << verb;
    EXPECT_EQ(run({"purge", "20260101-000000-00000D"}).out,
              "Purged session 20260101-000000-00000D, which could not be read\n");
    EXPECT_EQ(run({"sessions"}).err, "");
    EXPECT_EQ(run({"purge", ".."}).status, 1);
}

TEST_F(TerminalClean, ExpiredSessionsAreGivenUpByTheNextCleanOrWhenAsked) {
    const auto expired = [&] {
        Quarantine quarantine(home.paths());
        auto session =
            quarantine.beginSession(ManualTrigger{}, 7, addSeconds(currentDate(), -8 * 86400)).value();
        const std::string path = home.file("Documents/old", "x");
        EXPECT_TRUE(quarantine.add(*home.cleared(path), 5000, CleanCategory::oldDownloads, session));
        EXPECT_TRUE(quarantine.finish(session));
        return session.id;
    };
    expired();
    EXPECT_THAT(run({"sessions"}).out, HasSubstr("the next clean deletes it"));
    EXPECT_THAT(run({"clean", "trash", "--all", "--dry-run"}).out,
                HasSubstr("Also deletes from quarantine: 1 expired session, 5 KB."));
    EXPECT_EQ(json({"sessions"}).size(), 1U);
    EXPECT_THAT(run({"clean", "trash", "--all", "--yes"}).err, HasSubstr("purged 1 expired session, 5 KB"));
    EXPECT_EQ(json({"sessions"}), Json::array());
    const std::string second = expired();
    EXPECT_EQ(json({"purge", "--expired"}), Json({{"sessions", {second}}, {"freedBytes", 5000}}));
    EXPECT_EQ(json({"history"})[0]["target"], "expired quarantine");
}

TEST_F(TerminalClean, CheckTellsTheVerdictInWordsAndByName) {
    const auto told = run({"check", "~/Library/Caches/x", "~/.ssh", "/Library/Caches/x"});
    EXPECT_EQ(told.status, 0);
    EXPECT_EQ(told.out, "~/Library/Caches/x: may be removed\n"
                        "~/.ssh: never removed: Protected personal data\n"
                        "/Library/Caches/x: may be removed with administrator rights\n");
    const Json verdicts = json(
        {"check", "~/Downloads", "~/Library/CloudStorage/Dropbox/x", "/Library/Caches/x", "~/Downloads/x"});
    EXPECT_EQ(verdicts, Json::parse(R"([
        {"path": "~/Downloads", "verdict": "blocked", "detail": "Top-level folder"},
        {"path": "~/Library/CloudStorage/Dropbox/x", "verdict": "syncedCloud", "detail": "Dropbox"},
        {"path": "/Library/Caches/x", "verdict": "needsAdmin"},
        {"path": "~/Downloads/x", "verdict": "allowed"}])"));
    EXPECT_EQ(run({"check"}).status, 2);
}

TEST_F(TerminalClean, FailuresAndWhatCannotBeReadAreToldAndEndWithOne) {
    const std::string support = "Library/Application Support/Ostrel Loftmere/";
    // The quarantine cannot be made where a file is.
    home.file(support + "Quarantine", "in the way");
    const auto failed = run({"clean", "oldDownloads", "--all", "--yes"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_THAT(failed.out, HasSubstr("Failed"));
    EXPECT_THAT(failed.out, HasSubstr("1 failed"));
    for (const char* verb : {"sessions", "undo"}) {
        const auto told = run({verb});
        EXPECT_EQ(told.status, 1);
        EXPECT_EQ(told.out, "");
        EXPECT_THAT(told.err, HasSubstr("Quarantine cannot be read"));
    }
    // What cannot be logged is not removed.
    std::filesystem::remove(home.at(support + "audit.jsonl"));
    home.folder(support + "audit.jsonl");
    const auto history = run({"history"});
    EXPECT_EQ(history.status, 1);
    EXPECT_EQ(history.out, "");
    EXPECT_THAT(history.err, HasSubstr("audit.jsonl cannot be read"));
    const auto unlogged = run({"clean", "--all", "--yes"});
    EXPECT_EQ(unlogged.status, 1);
    EXPECT_THAT(unlogged.err, HasSubstr("sudo chown -R"));
    EXPECT_TRUE(allStands());
}

TEST_F(TerminalClean, WhatCannotBeDoneFailsTheDryRunTooAndOffersNoUndo) {
    const Mounted other("-t tmpfs none", home.at("Downloads"));
    if (!other.done) GTEST_SKIP() << "needs root";
    home.file(download, "x");
    home.setAgeDays(download, 400);
    for (const char* mode : {"--dry-run", "--yes"}) {
        const auto told = run({"clean", "oldDownloads", "--all", mode});
        EXPECT_EQ(told.status, 1) << mode;
        EXPECT_THAT(told.out, HasSubstr("manual.pdf is on another drive")) << mode;
        EXPECT_THAT(told.out, Not(HasSubstr("loftmere undo"))) << mode;
    }
    EXPECT_TRUE(stands(download));
}
