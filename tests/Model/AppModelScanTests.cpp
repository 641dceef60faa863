#include "CleanerCore/Files/JSONStore.h"
#include "tests/Support/ModelFixture.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>

using namespace loftmere;
using namespace loftmere::test;
using enum CleanCategory;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

namespace {

// A scanner that finds one item of each risk below the home, named after its category.
auto oneOfEach(CleanCategory category) {
    return [category](const ScanContext& context) -> Result<std::vector<ScanItem>> {
        const std::string base = context.lib(std::string("Caches/") + rawValue(category));
        context.report(category, base);
        std::vector<ScanItem> items;
        for (const auto& [name, risk] : {std::pair(".safe", Risk::safe), std::pair(".review", Risk::review),
                                         std::pair(".caution", Risk::caution)}) {
            items.push_back(ScanItem::make(
                {.target = PathTarget{base + name}, .size = 10, .category = category, .risk = risk}));
        }
        return items;
    };
}

class ModelThreaded : public ModelFixture {
protected:
    std::string found(const char* name) { return home.at(std::string("Library/Caches/") + name); }
};

} // namespace

TEST_F(ModelThreaded, FirstLaunchShowsDefaultsAndEveryChangeOfTheSettingsIsSaved) {
    const auto model = makeModel();
    loop->runReady();
    EXPECT_TRUE(*model->showOnboarding);
    EXPECT_EQ(*model->config, AppConfig{});
    EXPECT_TRUE(model->space->has_value());

    model->config.update([](AppConfig& config) { config.hasCompletedOnboarding = true; });
    EXPECT_TRUE(ConfigStore(home.paths()).load().hasCompletedOnboarding);
    model->config = AppConfig{.logAgeDays = 9};
    EXPECT_EQ(makeModel()->config->logAgeDays, 9);
}

TEST_F(ModelThreaded, ScanTicksOnlySafeItemsOfCategoriesSelectedByDefault) {
    const auto broken = [](const ScanContext&) -> Result<std::vector<ScanItem>> {
        return failed(Failure::saying("Docker is not running"));
    };
    const auto model =
        makeModel({{logs, oneOfEach(logs)}, {oldDownloads, oneOfEach(oldDownloads)}, {docker, broken}});
    const std::string kept = "/elsewhere";
    model->selected = {kept, found("oldDownloads.review")};
    finish(model->scan({logs, oldDownloads, docker, appBundle}, true));
    EXPECT_THAT(*model->selected,
                UnorderedElementsAre(kept, found("oldDownloads.review"), found("logs.safe")));
    EXPECT_EQ(model->items({oldDownloads, appBundle, logs}).size(), 6U);
    EXPECT_FALSE(model->results->contains(appBundle));
    EXPECT_EQ(model->results->at(docker).error, "Docker is not running");

    // A rescan drops the ticks of the categories it covers, also of what is found again.
    finish(model->scan({logs}, false));
    EXPECT_THAT(*model->selected, UnorderedElementsAre(kept, found("oldDownloads.review")));
}

TEST_F(ModelThreaded, DisjointScansOverlapAndAnOverlappingOneIsRefused) {
    // Each of the two waits for the other to have begun, so they end only if they run side by side.
    std::latch both(2);
    const auto meet = [&](const ScanContext&) -> Result<std::vector<ScanItem>> {
        both.arrive_and_wait();
        return std::vector<ScanItem>{};
    };
    const auto model = makeModel({{logs, meet}, {trash, meet}, {docker, oneOfEach(docker)}});
    const Task<> first = model->scan({logs}, true);
    EXPECT_THAT(model->busyLabels(), ElementsAre("Scanning Logs"));
    const Task<> refused = model->scan({docker, logs}, true);
    EXPECT_TRUE(refused.isDone());
    EXPECT_THAT(*model->scanningCategories, ElementsAre(logs));
    const Task<> second = model->scan({trash, mailDownloads}, true);
    EXPECT_THAT(model->busyLabels(), ElementsAre("Scanning 2 categories", "Scanning Logs"));
    EXPECT_TRUE(model->running("scan:mailDownloads,trash"));
    EXPECT_TRUE(model->runningAny("scan:") && !model->runningAny("clean"));
    runUntil([&] { return first.isDone() && second.isDone(); });
    EXPECT_FALSE(model->results->contains(docker));
    EXPECT_THAT(*model->ops, IsEmpty());
    EXPECT_THAT(*model->scanningCategories, IsEmpty());
}

TEST_F(ModelThreaded, FieldsChangeOnTheMainThreadOnlyAndObserversAreToldBefore) {
    ScannerScript script;
    std::vector<CleanCategory> all;
    for (const CategoryTraits& row : tableOf<CleanCategory>) {
        script[row.value] = oneOfEach(row.value);
        all.push_back(row.value);
    }
    const auto model = makeModel(std::move(script));
    const auto mainThread = std::this_thread::get_id();
    int told = 0;
    std::set<std::string> statuses;
    std::vector<Observation> observations;
    const auto watch = [&](auto& field) {
        observations.push_back(field.observe([&] {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            (void)field.get(); // reading elsewhere than on the main thread stops the program
            ++told;
        }));
    };
    watch(model->results), watch(model->selected), watch(model->scanningCategories), watch(model->ops);
    watch(model->scanStatus), watch(model->scanStatusCategory), watch(model->space), watch(model->toast);
    observations.push_back(model->scanStatus.observe([&] { statuses.insert(*model->scanStatus); }));

    finish(model->scan(all, true));
    model->flash("Done");
    EXPECT_GT(told, 20);
    // The last observation, at the end of the scan, still saw a status.
    EXPECT_TRUE(std::ranges::any_of(statuses, [](const auto& text) { return text.contains("Caches"); }));
    EXPECT_EQ(*model->scanStatus, "");
    EXPECT_EQ(*model->scanStatusCategory, std::nullopt);

    // Who ends another's observation in the course of a change keeps it from being told of that change.
    observations.clear();
    observations.push_back(model->toast.observe([&] { observations.clear(); }));
    observations.push_back(model->toast.observe([&] { ++told; }));
    const int before = told;
    model->flash("Unwatched");
    EXPECT_EQ(told, before);
}

#ifndef NDEBUG
TEST_F(ModelThreaded, FieldUsedOffTheMainThreadStopsADebugBuild) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto model = makeModel();
    EXPECT_DEATH(std::thread([&] { model->toast = "late"; }).join(), "off the main thread");
}
#endif

TEST_F(ModelThreaded, BackgroundWorkThatOutlivesTheModelWritesNothing) {
    std::promise<void> go;
    std::promise<void> ended;
    auto model = makeModel({{logs, [&](const ScanContext& context) -> Result<std::vector<ScanItem>> {
                                 go.get_future().wait();
                                 context.report(logs, "late");
                                 ended.set_value();
                                 return std::vector<ScanItem>{};
                             }}});
    const auto waiting = [](AppModel& of) -> Task<> { co_await of.scan({logs}, true); }(*model);
    model->flash("Bye");
    model.reset();
    go.set_value();
    ended.get_future().wait();
    bool flushed = false;
    runUntil([&] {
        // The thread posts its end a moment after the scanner's; the sanitizers see a write to the dead
        // model.
        loop->post([&] { flushed = true; });
        advance(4);
        return flushed;
    });
    EXPECT_FALSE(waiting.isDone());
}

TEST_F(ModelThreaded, FlashEndsAfterItsTimeUnlessANewerOneStands) {
    const auto model = makeModel();
    model->flash("one");
    advance(2);
    model->flash("two");
    advance(2);
    EXPECT_EQ(*model->toast, "two"); // the first timer has run out
    advance(1);
    model->flash("two");
    advance(0.4);
    EXPECT_EQ(*model->toast, "two");
    advance(0.1);
    EXPECT_EQ(*model->toast, std::nullopt); // equal messages share the first one's timer
}

TEST_F(ModelThreaded, OpenScansASectionOnceAndTicksJunkOnly) {
    ScannerScript script;
    for (const auto category : {userCaches, logs, trash, oldDownloads, docker})
        script[category] = oneOfEach(category);
    const auto model = makeModel(std::move(script));
    finish(model->scan({logs}, false));
    model->open(SidebarItem::systemJunk);
    EXPECT_EQ(*model->section, SidebarItem::systemJunk);
    loop->runReady();
    EXPECT_THAT(*model->ops, IsEmpty()); // one category had a result

    for (const auto& [item, category] :
         {std::pair(SidebarItem::personal, oldDownloads), std::pair(SidebarItem::developer, docker)}) {
        model->open(item);
        EXPECT_THAT(*model->ops, IsEmpty()); // not before the caller has returned
        runUntil([&] { return model->results->contains(category) && model->ops->empty(); });
    }
    EXPECT_THAT(*model->selected, ElementsAre(found("docker.safe")));
    EXPECT_EQ(model->items({oldDownloads}).size(), 3U);
}
