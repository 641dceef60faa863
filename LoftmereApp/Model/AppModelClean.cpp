#include "CleanerCore/Automation/ScheduledRunner.h"
#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "LoftmereApp/Model/AppModelWork.h"

#include <fmt/format.h>

#include <unordered_set>

namespace loftmere {

namespace {

// Takes each step to the main thread.
auto progressReporter(AppModel& model, std::function<void(std::function<void()>)> post) {
    return [&model, post = std::move(post)](int64_t done, int64_t total) {
        post([&model, done, total] {
            model.cleanProgress = total < 1 ? 1.0 : static_cast<double>(done) / static_cast<double>(total);
        });
    };
}

// Takes the first `count` items of the plan off the lists, apart from those that failed.
void forget(AppModel& model, const Plan& plan, int64_t count, const CleanReport& report) {
    std::unordered_set<std::string> handled;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) handled.insert(plan.items[i].item.id);
    for (const CleanFailure& failure : report.failures) handled.erase(failure.itemID);
    model.results.update([&](auto& all) {
        for (auto& [category, result] : all)
            std::erase_if(result.items, [&](const ScanItem& item) { return handled.contains(item.id); });
    });
    model.selected.update([&](auto& ticked) {
        std::erase_if(ticked, [&](const std::string& id) { return handled.contains(id); });
    });
}

} // namespace

Task<Plan> AppModel::preview(std::vector<ScanItem> items, TriggerSource trigger) const {
    co_return co_await work_->background(
        [items = std::move(items), trigger, home = paths, settings = config.get()]() mutable {
            return Cleaner(home, settings).plan(std::move(items), trigger);
        });
}

Task<CleanReport> AppModel::clean(std::vector<ScanItem> items, TriggerSource trigger,
                                  std::function<bool()> isStopped) {
    return clean(Plan::unseen(std::move(items), std::move(trigger), config), std::move(isStopped));
}

Task<CleanReport> AppModel::clean(Plan wanted, std::function<bool()> isStopped) {
    if (wanted.items.empty()) co_return CleanReport{};
    const auto plan = std::make_shared<const Plan>(std::move(wanted));
    const std::string key = "clean:" + newUUID().substr(0, 4);
    Work::begin(*this, key, fmt::format("Cleaning {} item(s)", plan->items.size()));
    cleanProgress = 0;

    const auto [report, count] =
        co_await work_->background([plan, home = paths, settings = config.get(),
                                    tell = progressReporter(*this, work_->poster()), isStopped] {
            // Keeps the agent from starting a run meanwhile. A clean that the user asked for waits for
            // nobody.
            const auto lock = FileLock::acquire(home.lockFile());
            int64_t handled = 0;
            const auto progress = [&](int64_t done, int64_t total) {
                handled = done;
                tell(done, total);
            };
            CleanReport cleaned = Cleaner(home, settings).clean(*plan, progress, isStopped);
            return std::pair(std::move(cleaned), handled);
        });

    forget(*this, *plan, count, report);
    lastReport = report;
    Work::end(*this, key);
    refreshAdminQueue();
    space = FS::volumeSpace(paths.home());
    refreshSafety();
    flash(ScheduledRunner::summarize(report, false));
    co_return report;
}

Task<CleanReport> AppModel::cleanSelected(std::vector<CleanCategory> categories,
                                          std::function<bool()> isStopped) {
    std::vector<ScanItem> ticked = items(categories);
    std::erase_if(ticked, [&](const ScanItem& item) { return !selected->contains(item.id); });
    co_return co_await clean(std::move(ticked), ManualTrigger{}, std::move(isStopped));
}

std::string AppModel::summary(const CleanReport& report, bool dryRun) {
    return ScheduledRunner::summarize(report, dryRun);
}

} // namespace loftmere
