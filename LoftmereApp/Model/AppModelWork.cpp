#include "LoftmereApp/Model/AppModelWork.h"

#include <system_error>
#include <thread>

namespace loftmere {

Continuation::~Continuation() {
    if (handle_) handle_.destroy();
}

void Continuation::resume() {
    std::exchange(handle_, nullptr).resume();
}

void runDetached(std::function<void()> job) {
    // Shared, so that what the job holds is not copied.
    const auto shared = std::make_shared<std::function<void()>>(std::move(job));
    try {
        std::thread([shared] { (*shared)(); }).detach();
    } catch (const std::system_error&) {
        (*shared)();
    }
}

std::function<void(std::function<void()>)> AppModel::Work::poster() const {
    return [main = main, life = std::weak_ptr(life)](std::function<void()> change) {
        main->post([life, change = std::move(change)] {
            if (!life.expired()) change();
        });
    };
}

void AppModel::Work::begin(AppModel& model, const std::string& key, std::string label) {
    model.ops.update([&](auto& running) { running[key] = std::move(label); });
}

void AppModel::Work::end(AppModel& model, const std::string& key) {
    model.ops.update([&](auto& running) { running.erase(key); });
}

} // namespace loftmere
