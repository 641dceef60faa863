#include "CleanerCore/Files/FS.h"
#include "LoftmereApp/Model/AppModel.h"

namespace loftmere {

namespace {

constexpr double flashSeconds = 3.5;

} // namespace

void AppModel::refreshBasics() {
    space = FS::volumeSpace(paths.home());
    agentInstalled = FS::exists(paths.launchAgentPlist());
    refreshAdminQueue();
    refreshSafety();
}

void AppModel::flash(std::string message) {
    toast = message;
    main_->after(flashSeconds, [this, life = std::weak_ptr(life_), message = std::move(message)] {
        if (!life.expired() && *toast == message) toast = std::nullopt;
    });
}

} // namespace loftmere
