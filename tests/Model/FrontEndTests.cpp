#include "LoftmereApp/Model/AppModel.h"
#include "tests/Support/TemporaryHome.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

using namespace loftmere;

namespace {

// The event loop of a toolkit that nobody has written.
class EventLoop : public MainThread {
public:
    void post(std::function<void()> task) override {
        const std::lock_guard guard(lock_);
        events_.push_back(std::move(task));
        changed_.notify_one();
    }
    void after(double, std::function<void()>) override {} // nothing shown here fades
    bool isCurrent() const override { return std::this_thread::get_id() == thread_; }

    // Handles events until the task is done.
    template <class T> auto run(const Task<T>& task) {
        while (!task.isDone()) {
            std::unique_lock guard(lock_);
            changed_.wait(guard, [&] { return !events_.empty(); });
            const auto event = std::move(events_.front());
            events_.pop_front();
            guard.unlock();
            event();
        }
        return task.value();
    }

private:
    const std::thread::id thread_ = std::this_thread::get_id();
    std::mutex lock_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> events_;
};

using Lines = std::vector<std::string>;

constexpr auto wanted = {CleanCategory::logs, CleanCategory::oldDownloads};

// What its screen lists.
Lines rowsOf(const AppModel& model) {
    Lines rows;
    for (const ScanItem& item : model.items(wanted))
        rows.push_back((model.selected->contains(item.id) ? "[x] " : "[ ] ") + item.title);
    return rows;
}

} // namespace

TEST(FrontEndThreaded, ASecondOneScansCleansAndUndoesThroughTheModelAlone) {
    const test::TemporaryHome home;
    home.file("Library/Logs/old.log", "x");
    home.setAgeDays("Library/Logs/old.log", 30);
    const std::string download = home.file("Downloads/manual.pdf", "x");
    home.setAgeDays("Downloads/manual.pdf", 400);
    const auto loop = std::make_shared<EventLoop>();
    AppModel model(loop, home.paths());
    int redraws = 0;
    const Observation redraw = model.results.observe([&] { ++redraws; });
    EXPECT_TRUE(model.settingsState() && model.logState());

    loop->run(model.scan(categoriesOf(SidebarItem::systemJunk), true));
    loop->run(model.scan(categoriesOf(SidebarItem::personal), false));
    EXPECT_EQ(rowsOf(model), (Lines{"[x] old.log", "[ ] manual.pdf"}));
    EXPECT_GT(redraws, 0);

    model.selected.update([&](auto& ticked) { ticked.insert(download); });
    const Plan plan = loop->run(model.preview(model.items(wanted), ManualTrigger{}));
    EXPECT_TRUE(plan.report().failures.empty());
    const CleanReport report = loop->run(model.clean(plan));
    EXPECT_EQ(report.itemsProcessed, 2);
    EXPECT_EQ(*model.toast, AppModel::summary(report, false));
    EXPECT_EQ(rowsOf(model), Lines{});

    ASSERT_EQ(model.sessions->size(), 1U);
    EXPECT_EQ(model.restore(model.sessions->front(), std::nullopt).value().count, 1U);
    EXPECT_TRUE(model.sessions->empty() && model.unreadableSessions->empty());
    Lines actions;
    for (const AuditEntry& entry : loop->run(model.history(2))) actions.push_back(entry.action);
    EXPECT_EQ(actions, (Lines{"restore", "quarantine"}));
    const auto verdicts = loop->run(model.check({download, "~/.ssh"}));
    EXPECT_EQ(verdicts.at(0), PathVerdict{PathVerdict::Kind::allowed});
    EXPECT_EQ(verdicts.at(1).kind, PathVerdict::Kind::blocked);
    loop->run(model.scan({CleanCategory::oldDownloads}, false));
    EXPECT_EQ(rowsOf(model), Lines{"[ ] manual.pdf"});
}
