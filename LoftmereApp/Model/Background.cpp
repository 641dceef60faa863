#include "LoftmereApp/Model/Background.h"

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

} // namespace loftmere
