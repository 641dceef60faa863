#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/ScanEngine.h"
#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/AppModelWork.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

std::string scanKey(const std::set<CleanCategory>& categories) {
    std::vector<std::string> names;
    for (const CleanCategory category : categories) names.emplace_back(rawValue(category));
    std::ranges::sort(names);
    return "scan:" + joined(names, ",");
}

std::string scanLabel(const std::set<CleanCategory>& categories) {
    if (categories.size() == 1) return fmt::format("Scanning {}", traits(*categories.begin()).displayName);
    return fmt::format("Scanning {} categories", categories.size());
}

// Takes each status to the main thread.
auto statusReporter(AppModel& model, std::function<void(std::function<void()>)> post) {
    return [&model, post = std::move(post)](CleanCategory category, const std::string& text) {
        post([&model, category, text] {
            model.scanStatusCategory = category;
            model.scanStatus = text;
        });
    };
}

void store(AppModel& model, const CategoryResult& result, bool autoSelectSafe) {
    // Ticks of what was found before do not survive, not even those of what was found again.
    const std::vector<ScanItem> old = model.items({result.category});
    model.results.update([&](auto& all) { all.insert_or_assign(result.category, result); });
    model.selected.update([&](auto& ticked) {
        for (const ScanItem& item : old) ticked.erase(item.id);
        if (!autoSelectSafe || !traits(result.category).selectedByDefault) return;
        for (const ScanItem& item : result.items) {
            if (item.risk == Risk::safe) ticked.insert(item.id);
        }
    });
}

} // namespace

Task<> AppModel::scan(std::vector<CleanCategory> categories, bool autoSelectSafe) {
    const std::set<CleanCategory> wanted(categories.begin(), categories.end());
    const auto isBeingScanned = [&](CleanCategory category) {
        return scanningCategories->contains(category);
    };
    if (wanted.empty() || std::ranges::any_of(wanted, isBeingScanned)) co_return;

    const std::string key = scanKey(wanted);
    Work::begin(*this, key, scanLabel(wanted));
    scanningCategories.update([&](auto& scanning) { scanning.insert(wanted.begin(), wanted.end()); });

    const auto found =
        co_await work_->background([wanted, home = paths, settings = config.get(), make = work_->scanners,
                                    status = statusReporter(*this, work_->poster())] {
            return ScanEngine(home, settings).scan(make(wanted), nullptr, nullptr, status);
        });

    scanStatus = std::string();
    scanStatusCategory = std::nullopt;
    for (const CategoryResult& result : found) store(*this, result, autoSelectSafe);
    scanningCategories.update([&](auto& scanning) {
        for (const CleanCategory category : wanted) scanning.erase(category);
    });
    space = FS::volumeSpace(paths.home());
    Work::end(*this, key);
}

std::vector<ScanItem> AppModel::items(const std::vector<CleanCategory>& categories) const {
    std::vector<ScanItem> all;
    for (const CleanCategory category : categories) {
        const auto result = results->find(category);
        if (result == results->end()) continue;
        all.insert(all.end(), result->second.items.begin(), result->second.items.end());
    }
    return all;
}

} // namespace loftmere
