#include "CleanerCore/Automation/ScheduledRunner.h"
#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Platform/FileLock.h"
#include "CleanerCore/Removal/Cleaning/Cleaner.h"
#include "CleanerCore/Support/UUID.h"
#include "LoftmereApp/Model/AppModel.h"

#include <fmt/format.h>

#include <unordered_set>

namespace loftmere {

Task<CleanPreview> AppModel::preview(std::vector<ScanItem> items, TriggerSource trigger) const {
    co_return co_await background([items, trigger, home = paths, settings = config.get()] {
        Cleaner cleaner(home, settings);
        CleanPreview preview{.plans = {}, .report = cleaner.clean(items, trigger, true)};
        for (const ScanItem& item : items) preview.plans.push_back(cleaner.plan(item, trigger));
        return preview;
    });
}

Task<CleanReport> AppModel::clean(std::vector<ScanItem> items, TriggerSource trigger,
                                  std::function<bool()> isStopped) {
    if (items.empty()) co_return CleanReport{};
    const std::string key = "clean:" + newUUID().substr(0, 4);
    begin(key, fmt::format("Cleaning {} item(s)", items.size()));
    cleanProgress = 0;

    const auto [report, count] = co_await background(
        [items, trigger, home = paths, settings = config.get(), tell = progressReporter(), isStopped] {
            // Keeps the agent from starting a run meanwhile. A clean that the user asked for waits for
            // nobody.
            const auto lock = FileLock::acquire(home.lockFile());
            int64_t handled = 0;
            const auto progress = [&](int64_t done, int64_t total) {
                handled = done;
                tell(done, total);
            };
            CleanReport cleaned =
                Cleaner(home, settings).clean(items, trigger, false, std::nullopt, progress, isStopped);
            return std::pair(std::move(cleaned), handled);
        });

    items.resize(static_cast<size_t>(count));
    forget(items, report);
    lastReport = report;
    end(key);
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

std::function<void(int64_t, int64_t)> AppModel::progressReporter() {
    return [this, main = main_, life = std::weak_ptr(life_)](int64_t done, int64_t total) {
        main->post([this, life, done, total] {
            if (life.expired()) return;
            cleanProgress = total < 1 ? 1.0 : static_cast<double>(done) / static_cast<double>(total);
        });
    };
}

void AppModel::forget(const std::vector<ScanItem>& items, const CleanReport& report) {
    std::unordered_set<std::string> handled;
    for (const ScanItem& item : items) handled.insert(item.id);
    for (const CleanFailure& failure : report.failures) handled.erase(failure.itemID);
    results.update([&](auto& all) {
        for (auto& [category, result] : all)
            std::erase_if(result.items, [&](const ScanItem& item) { return handled.contains(item.id); });
    });
    selected.update([&](auto& ticked) {
        std::erase_if(ticked, [&](const std::string& id) { return handled.contains(id); });
    });
}

} // namespace loftmere
