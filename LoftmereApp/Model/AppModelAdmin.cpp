#include "CleanerCore/Files/FS.h"
#include "CleanerCore/Support/ByteFormat.h"
#include "LoftmereApp/Model/AppModel.h"

#include <fmt/format.h>

namespace loftmere {

namespace {

std::string words(const AdminQueue::Outcome& outcome) {
    if (outcome.failed.empty()) {
        return fmt::format("Removed {} protected item(s), {} freed", outcome.removed.size(),
                           ByteFormat::string(outcome.freed));
    }
    return fmt::format("{} removed · {} blocked: {}", outcome.removed.size(), outcome.failed.size(),
                       outcome.failed.front().second);
}

} // namespace

void AppModel::refreshAdminQueue() {
    pendingAdmin = static_cast<int>(AdminQueue::shared().pending().size());
    pendingAdminBytes = AdminQueue::shared().pendingBytes();
}

Task<AdminQueue::Outcome> AppModel::flushAdminQueue() {
    const std::string key = "clean:admin";
    begin(key, "Removing protected items");
    const AdminQueue::Outcome outcome = co_await background(
        [home = paths, settings = config.get()] { return AdminQueue::shared().flush(home, settings); });
    end(key);
    refreshAdminQueue();
    refreshSafety();
    space = FS::volumeSpace(paths.home());
    flash(words(outcome));
    co_return outcome;
}

} // namespace loftmere
