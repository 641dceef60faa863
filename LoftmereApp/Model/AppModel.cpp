#include "LoftmereApp/Model/AppModel.h"

#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Files/JSONStore.h"
#include "CleanerCore/Platform/FileStatus.h"
#include "CleanerCore/Platform/System.h"
#include "CleanerCore/Safety/RemovalPermit.h"
#include "CleanerCore/Scanning/ScannerRegistry.h"
#include "CleanerCore/Support/PathText.h"
#include "LoftmereApp/Model/AppModelWork.h"

#include <fmt/format.h>

#include <algorithm>

namespace loftmere {

namespace {

constexpr double flashSeconds = 3.5;

void scanIfNew(AppModel& model, SidebarItem item) {
    const std::vector<CleanCategory> categories = categoriesOf(item);
    const auto hasResult = [&](CleanCategory category) { return model.results->contains(category); };
    if (std::ranges::any_of(categories, hasResult)) return;
    const auto isJunk = [](CleanCategory category) { return traits(category).isJunk; };
    model.scan(categories, std::ranges::all_of(categories, isJunk));
}

void load(AppModel& model, SidebarItem item) {
    switch (item) {
    case SidebarItem::smartCare:
    case SidebarItem::schedules:
    case SidebarItem::quarantine: return model.refreshSafety();
    case SidebarItem::systemJunk:
    case SidebarItem::developer:
    case SidebarItem::personal:
    case SidebarItem::clutter:
    case SidebarItem::cloud: return scanIfNew(model, item);
    case SidebarItem::insights: return model.refreshBasics();
    case SidebarItem::security:
    case SidebarItem::performance:
    case SidebarItem::maintenance:
    case SidebarItem::uninstaller:
    case SidebarItem::updater:
    case SidebarItem::shredder:
    case SidebarItem::permissions: return; // nothing to load
    }
}

} // namespace

BasicFields::BasicFields(const MainThread& main, Paths home)
    : FieldGroup(main),
      paths(std::move(home)),
      config(main, ConfigStore(paths).load(),
             [this](const AppConfig& value) { (void)ConfigStore(paths).save(value); }) {}

Result<Paths> AppModel::currentHome() {
    const Paths paths(homeDirectory());
    if (paths.home() == "/") return failed(Failure::saying("there is no home folder; set HOME to its path"));
    if (readDirectory(paths.home())) return paths;
    return failed(Failure::saying(fmt::format("the home folder {} cannot be read", paths.home())));
}

AppModel::AppModel(std::shared_ptr<MainThread> main, Paths home, Scanners scanners)
    : BasicFields(*main, std::move(home)),
      ScanFields(*main),
      CleanFields(*main),
      SafetyFields(*main),
      work_(new Work{.main = std::move(main),
                     .scanners = scanners ? std::move(scanners) : ScannerRegistry::scanners}) {
    raiseDescriptorLimit();
    (void)paths.ensureSupportDirs();
    refreshBasics();
    showOnboarding = !config->hasCompletedOnboarding;
}

AppModel::~AppModel() = default;

void AppModel::refreshBasics() {
    space = FS::volumeSpace(paths.home());
    agentInstalled = FS::exists(paths.launchAgentPlist());
    refreshAdminQueue();
    refreshSafety();
}

void AppModel::open(SidebarItem item) {
    section = item;
    work_->poster()([this, item] { load(*this, item); });
}

void AppModel::flash(std::string message) {
    toast = message;
    work_->main->after(flashSeconds, [this, life = std::weak_ptr(work_->life), message = std::move(message)] {
        if (!life.expired() && *toast == message) toast = std::nullopt;
    });
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

std::string AppModel::shortened(const std::string& path) const {
    if (path == paths.home() || !isAtOrUnder(path, paths.home())) return path;
    return "~" + path.substr(paths.home().size());
}

Status AppModel::settingsState() const {
    if (!ConfigStore(paths).isDamaged()) return {};
    return failed(RemovalPermit::refusal(shortened(paths.configFile())));
}

} // namespace loftmere
