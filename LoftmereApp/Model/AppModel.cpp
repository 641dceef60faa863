#include "LoftmereApp/Model/AppModel.h"

#include "CleanerCore/Files/ConfigStore.h"

#include <algorithm>

namespace loftmere {

AppModel::AppModel(std::shared_ptr<MainThread> main, Paths home, Scanners scanners)
    : main_(std::move(main)),
      paths(std::move(home)),
      config(*main_, ConfigStore(paths).load(),
             [this](const AppConfig& value) { (void)ConfigStore(paths).save(value); }),
      scanners_(std::move(scanners)) {
    (void)paths.ensureSupportDirs();
    refreshBasics();
    showOnboarding = !config->hasCompletedOnboarding;
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

std::vector<std::string> AppModel::busyLabels() const {
    std::vector<std::string> labels;
    for (const auto& [key, label] : *ops) labels.push_back(label);
    std::ranges::sort(labels);
    return labels;
}

bool AppModel::running(const std::string& key) const {
    return ops->contains(key);
}

bool AppModel::runningAny(const std::string& prefix) const {
    const auto first = ops->lower_bound(prefix);
    return first != ops->end() && first->first.starts_with(prefix);
}

void AppModel::begin(const std::string& key, std::string label) {
    ops.update([&](auto& running) { running[key] = std::move(label); });
}

void AppModel::end(const std::string& key) {
    ops.update([&](auto& running) { running.erase(key); });
}

void AppModel::postWhileAlive(std::function<void()> change) const {
    main_->post([life = std::weak_ptr(life_), change = std::move(change)] {
        if (!life.expired()) change();
    });
}

} // namespace loftmere
