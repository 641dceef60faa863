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

// A front end that knows the model and nothing of the core but records: a list of findings with ticks.
class ListScreen {
public:
    explicit ListScreen(const Paths& home) : model(loop, home) {
        redraw_ = model.results.observe([this] { isStale_ = true; });
    }
    std::vector<std::string> rows() {
        std::vector<std::string> rows;
        if (!std::exchange(isStale_, false)) return rows;
        for (const ScanItem& item : model.items({CleanCategory::logs, CleanCategory::oldDownloads}))
            rows.push_back((model.selected->contains(item.id) ? "[x] " : "[ ] ") + item.title);
        return rows;
    }

    const std::shared_ptr<EventLoop> loop = std::make_shared<EventLoop>();
    AppModel model;

private:
    bool isStale_ = false;
    Observation redraw_;
};

using Lines = std::vector<std::string>;

} // namespace

TEST(FrontEndThreaded, ASecondOneScansCleansAndUndoesThroughTheModelAlone) {
    const test::TemporaryHome home;
    home.file("Library/Logs/old.log", "x");
    home.setAgeDays("Library/Logs/old.log", 30);
    const std::string download = home.file("Downloads/manual.pdf", "x");
    home.setAgeDays("Downloads/manual.pdf", 400);
    ListScreen screen(home.paths());
    AppModel& model = screen.model;
    EXPECT_TRUE(model.settingsState());

    screen.loop->run(model.scan(categoriesOf(SidebarItem::systemJunk), true));
    screen.loop->run(model.scan(categoriesOf(SidebarItem::personal), false));
    EXPECT_EQ(screen.rows(), (Lines{"[x] old.log", "[ ] manual.pdf"}));
    EXPECT_EQ(screen.rows(), Lines{}); // nothing has changed

    model.selected.update([&](auto& ticked) { ticked.insert(download); });
    const auto& items = model.items({CleanCategory::logs, CleanCategory::oldDownloads});
    const CleanPreview preview = screen.loop->run(model.preview(items, ManualTrigger{}));
    EXPECT_EQ(preview.report.failures.size(), 0U);
    const CleanReport report =
        screen.loop->run(model.cleanSelected({CleanCategory::logs, CleanCategory::oldDownloads}));
    EXPECT_EQ(report.itemsProcessed, 2);
    EXPECT_EQ(*model.toast, AppModel::summary(report, false));
    EXPECT_EQ(screen.rows(), Lines{});
    EXPECT_TRUE(model.items({CleanCategory::logs, CleanCategory::oldDownloads}).empty());

    ASSERT_EQ(model.sessions->size(), 1U);
    EXPECT_TRUE(model.restore(model.sessions->front(), std::nullopt));
    EXPECT_TRUE(model.sessions->empty() && model.unreadableSessions->empty());
    Lines actions;
    for (const AuditEntry& entry : screen.loop->run(model.history(2))) actions.push_back(entry.action);
    EXPECT_EQ(actions, (Lines{"restore", "quarantine"}));
    const auto verdicts = screen.loop->run(model.check({download, "~/.ssh"}));
    EXPECT_EQ(verdicts.at(0), PathVerdict{PathVerdict::Kind::allowed});
    EXPECT_EQ(verdicts.at(1).kind, PathVerdict::Kind::blocked);
    screen.loop->run(model.scan({CleanCategory::oldDownloads}, false));
    EXPECT_EQ(screen.rows(), Lines{"[ ] manual.pdf"});
}
