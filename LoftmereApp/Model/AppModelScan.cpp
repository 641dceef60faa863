#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Scanning/ScanEngine.h"
#include "CleanerCore/Support/Text.h"
#include "LoftmereApp/Model/AppModel.h"

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

} // namespace

Task<> AppModel::scan(std::vector<CleanCategory> categories, bool autoSelectSafe) {
    const std::set<CleanCategory> wanted(categories.begin(), categories.end());
    const auto isBeingScanned = [&](CleanCategory category) {
        return scanningCategories->contains(category);
    };
    if (wanted.empty() || std::ranges::any_of(wanted, isBeingScanned)) co_return;

    const std::string key = scanKey(wanted);
    begin(key, scanLabel(wanted));
    scanningCategories.update([&](auto& scanning) { scanning.insert(wanted.begin(), wanted.end()); });

    const auto found = co_await background(
        [wanted, home = paths, settings = config.get(), make = scanners_, status = statusReporter()] {
            return ScanEngine(home, settings).scan(make(wanted), nullptr, nullptr, status);
        });

    scanStatus = std::string();
    scanStatusCategory = std::nullopt;
    store(found, autoSelectSafe);
    scanningCategories.update([&](auto& scanning) {
        for (const CleanCategory category : wanted) scanning.erase(category);
    });
    space = FS::volumeSpace(paths.home());
    end(key);
}

std::function<void(CleanCategory, const std::string&)> AppModel::statusReporter() {
    return
        [this, main = main_, life = std::weak_ptr(life_)](CleanCategory category, const std::string& text) {
            main->post([this, life, category, text] {
                if (life.expired()) return;
                scanStatusCategory = category;
                scanStatus = text;
            });
        };
}

void AppModel::store(const std::vector<CategoryResult>& found, bool autoSelectSafe) {
    for (const CategoryResult& result : found) {
        // Ticks of what was found before do not survive, also not of what was found again.
        const std::vector<ScanItem> old = items({result.category});
        results.update([&](auto& all) { all.insert_or_assign(result.category, result); });
        selected.update([&](auto& ticked) {
            for (const ScanItem& item : old) ticked.erase(item.id);
            if (!autoSelectSafe || !traits(result.category).selectedByDefault) return;
            for (const ScanItem& item : result.items) {
                if (item.risk == Risk::safe) ticked.insert(item.id);
            }
        });
    }
}

} // namespace loftmere
