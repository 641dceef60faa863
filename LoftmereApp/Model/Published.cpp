#include "LoftmereApp/Model/Published.h"

#include <cassert>

namespace loftmere {

Observation Observers::add(std::function<void()> observer) {
    const int key = next_++;
    list_->emplace(key, std::move(observer));
    const auto forget = [list = std::weak_ptr(list_), key](void*) {
        if (const auto still = list.lock()) still->erase(key);
    };
    return Observation(std::shared_ptr<void>(static_cast<void*>(nullptr), forget));
}

void Observers::notify() const {
    // A copy, because an observer may begin and end observations, its own and those of others.
    const List observers = *list_;
    for (const auto& [key, observer] : observers) {
        if (list_->contains(key)) observer();
    }
}

void Observers::checkThread() const {
    assert(main_->isCurrent() && "a field of the model was used off the main thread");
}

} // namespace loftmere
