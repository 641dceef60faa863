#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Removal/AuditLog.h"
#include "tests/Support/ModelFixture.h"

#include <gmock/gmock.h>

using namespace loftmere;
using namespace loftmere::test;
using enum CleanCategory;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

class ModelCleanThreaded : public ModelFixture {
protected:
    ScanItem newFile(const char* relative, CleanCategory category) {
        const std::string path = home.file(relative, "x");
        return ScanItem::make({.target = PathTarget{path}, .size = 1000, .category = category});
    }
    ScanItem command(const std::string& script) {
        return ScanItem::make({.target = CommandTarget{{.executable = "sh", .arguments = {"-c", script}}},
                               .size = 5,
                               .category = docker});
    }
    // A model that has found these items and has them all ticked.
    std::unique_ptr<AppModel> modelWith(const std::vector<ScanItem>& items) {
        auto model = makeModel();
        for (const ScanItem& one : items) {
            model->results.update([&](auto& all) {
                all[one.category].category = one.category;
                all[one.category].items.push_back(one);
            });
            model->selected.update([&](auto& ticked) { ticked.insert(one.id); });
        }
        return model;
    }
    bool exists(const std::string& relative) { return FS::exists(home.at(relative)); }
};

} // namespace

TEST_F(ModelCleanThreaded, HandledItemsLeaveTheListsAndFailedOnesStay) {
    const ScanItem broken = command("echo broken >&2; exit 3");
    const ScanItem unticked = newFile("Downloads/unticked.pdf", oldDownloads);
    const auto model =
        modelWith({newFile("Library/Logs/old.log", logs), newFile("Downloads/book.pdf", oldDownloads),
                   unticked, newFile(".ssh/id", largeOldFiles), broken});
    model->selected.update([&](auto& ticked) { ticked.erase(unticked.id); });

    const Plan plan = finish(model->preview(model->items({logs, oldDownloads, largeOldFiles, docker}), {}));
    std::vector<PlannedAction> planned;
    for (const PlannedItem& each : plan.items) planned.push_back(each.decision.action);
    EXPECT_THAT(planned, ElementsAre(PlannedAction::remove, PlannedAction::quarantine,
                                     PlannedAction::quarantine, PlannedAction::skip, PlannedAction::command));
    EXPECT_TRUE(exists("Library/Logs/old.log") && exists("Downloads/book.pdf"));
    EXPECT_THAT(*model->audit, IsEmpty());

    const auto run = model->cleanSelected({logs, oldDownloads, largeOldFiles, docker});
    EXPECT_THAT(model->busyLabels(), ElementsAre("Cleaning 4 item(s)"));
    EXPECT_TRUE(model->runningAny("clean:"));
    const CleanReport report = finish(run);
    EXPECT_THAT(report.failures, ElementsAre(CleanFailure{broken.id, "broken\n"}));
    EXPECT_THAT(report.skippedProtected, ElementsAre(home.at(".ssh/id")));
    EXPECT_EQ(*model->lastReport, report);
    EXPECT_EQ(*model->toast, "Freed 1 KB, 1 KB to quarantine, 1 failed");
    EXPECT_THAT(*model->selected, ElementsAre(broken.id));
    EXPECT_THAT(model->items({logs, oldDownloads, largeOldFiles, docker}), ElementsAre(unticked, broken));
    EXPECT_FALSE(exists("Library/Logs/old.log") || exists("Downloads/book.pdf"));
    EXPECT_TRUE(exists(".ssh/id") && exists("Downloads/unticked.pdf"));
    EXPECT_EQ(model->sessions->size(), 1U);
    EXPECT_EQ(model->audit->size(), 4U);
    EXPECT_THAT(*model->ops, IsEmpty());
}

TEST_F(ModelCleanThreaded, ProgressIsAFractionAndTheLockIsTakenIfItCanBe) {
    const std::string go = home.at("go");
    const auto model = modelWith({});
    const ScanItem waiting = command("until [ -e '" + go + "' ]; do sleep 0.01; done");
    const auto run = model->clean({newFile("Library/Logs/a", logs), waiting}, ManualTrigger{});
    runUntil([&] { return *model->cleanProgress == 0.5; });
    EXPECT_FALSE(FileLock::acquire(model->paths.lockFile()));
    home.file("go", "");
    EXPECT_EQ(finish(run).itemsProcessed, 2);
    EXPECT_EQ(*model->cleanProgress, 1.0);

    const auto taken = FileLock::acquire(model->paths.lockFile());
    ASSERT_TRUE(taken);
    EXPECT_EQ(finish(model->clean({waiting}, ManualTrigger{})).itemsProcessed, 1);

    const auto nothing = model->clean({}, ManualTrigger{});
    EXPECT_TRUE(nothing.isDone());
    EXPECT_EQ(nothing.value(), CleanReport{});
}

TEST_F(ModelCleanThreaded, WhatWasQuarantinedComesBackOrIsGivenUp) {
    const auto model =
        modelWith({newFile("Downloads/a.pdf", oldDownloads), newFile("Downloads/b.pdf", oldDownloads)});
    finish(model->cleanSelected({oldDownloads}));
    const QuarantineSession session = model->sessions->at(0);
    EXPECT_EQ(model->restore(session, std::set<std::string>{"0-a.pdf"}).value().count, 1U);
    EXPECT_EQ(*model->toast, "Restored");
    EXPECT_EQ(model->sessions->at(0).activeCount(), 1);
    EXPECT_TRUE(exists("Downloads/a.pdf"));
    home.file("Downloads/b.pdf", "in the way");
    EXPECT_EQ(model->restore(session, std::nullopt).value().failures.size(), 1U);
    EXPECT_THAT(**model->toast, StartsWith("1 item(s) couldn't be restored: Something already exists at "));
    EXPECT_TRUE(model->purge(model->sessions->at(0)));
    EXPECT_THAT(*model->sessions, IsEmpty());
    EXPECT_EQ(model->audit->at(0).action, "purge");
    EXPECT_EQ(model->audit->at(0).size, 1000);
    EXPECT_FALSE(model->restore(session, std::nullopt)); // nothing is left to bring back
    EXPECT_THAT(**model->toast, EndsWith("nothing was restored"));
}

TEST_F(ModelCleanThreaded, TheAdministratorQueueIsShownAndEmptied) {
    const auto model = makeModel();
    const ScanItem vanished = ScanItem::make(
        {.target = AdminPathTarget{"/Library/Caches/com.ostrel.none"}, .size = 700, .category = userCaches});
    AdminQueue::shared().enqueue({vanished});
    model->refreshAdminQueue();
    EXPECT_EQ(*model->pendingAdmin, 1);
    EXPECT_EQ(*model->pendingAdminBytes, 700);
    const auto flush = model->flushAdminQueue();
    EXPECT_THAT(model->busyLabels(), ElementsAre("Removing protected items"));
    finish(flush);
    EXPECT_EQ(*model->pendingAdmin, 0);
    EXPECT_EQ(*model->toast, "Removed 0 protected item(s), Zero KB freed");
}

TEST_F(ModelCleanThreaded, EachOperationRefreshesWhatItMayHaveChanged) {
    AuditLog(home.paths()).append(std::vector<AuditEntry>(310));
    const auto model =
        modelWith({newFile("Downloads/a", oldDownloads), newFile("Downloads/b", oldDownloads)});
    EXPECT_EQ(model->audit->size(), 300U);
    std::set<std::string> refreshed;
    std::vector<Observation> observations;
    const auto watch = [&](auto& field, const char* name) {
        observations.push_back(field.observe([&refreshed, name] { refreshed.insert(name); }));
    };
    watch(model->pendingAdmin, "queue"), watch(model->pendingAdminBytes, "bytes");
    watch(model->sessions, "sessions"), watch(model->audit, "log"), watch(model->space, "space");
    const auto refreshedBy = [&](const auto& operation) {
        refreshed.clear();
        operation();
        return refreshed;
    };
    using Names = std::set<std::string>;
    const Names all{"queue", "bytes", "sessions", "log", "space"};
    const Names safety{"sessions", "log"};
    EXPECT_EQ(refreshedBy([&] { finish(model->cleanSelected({oldDownloads})); }), all);
    EXPECT_EQ(refreshedBy([&] { finish(model->flushAdminQueue()); }), all);
    EXPECT_EQ(refreshedBy([&] { model->refreshBasics(); }), all);
    const QuarantineSession session = model->sessions->at(0);
    EXPECT_EQ(refreshedBy([&] { (void)model->restore(session, std::set<std::string>{"0-a"}); }), safety);
    EXPECT_EQ(refreshedBy([&] { (void)model->purge(session); }), safety);
    EXPECT_EQ(refreshedBy([&] { finish(model->purgeExpired()); }), (Names{"sessions", "log", "space"}));
    EXPECT_EQ(refreshedBy([&] { finish(model->scan({logs}, true)); }), Names{"space"});
}

TEST_F(ModelCleanThreaded, ChecksByTheRulesOfTheUser) {
    const auto model = makeModel();
    model->config = AppConfig{.protectedPaths = {"~/Work"}};
    const auto verdicts = finish(model->check({"~/Work/a", "~/Other"}));
    EXPECT_EQ(verdicts.at(0).detail, "Protected by your rules (" + home.at("Work") + ")");
    EXPECT_EQ(verdicts.at(1).kind, PathVerdict::Kind::allowed);
    home.file("Library/LaunchAgents/com.ostrel.loftmere.agent.plist", "");
    EXPECT_TRUE(*makeModel()->agentInstalled && !*model->agentInstalled);
    EXPECT_EQ(model->shortened(home.path()), home.path());
    EXPECT_EQ(model->shortened(home.at("a")), "~/a");
}
