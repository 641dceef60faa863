#pragma once

#include "LoftmereApp/Model/MainThread.h"

#include <cassert>
#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace loftmere {

// Keeps an observer registered for as long as it lives. It may outlive what it observes.
class Observation {
public:
    Observation() = default;

private:
    friend class Observers;
    explicit Observation(std::shared_ptr<void> registration) : registration_(std::move(registration)) {}
    std::shared_ptr<void> registration_;
};

// The observers of one field.
class Observers {
public:
    explicit Observers(const MainThread& main) : main_(&main) {}
    Observers(const Observers&) = delete;
    Observers& operator=(const Observers&) = delete;

    [[nodiscard]] Observation add(std::function<void()> observer);
    // Calls all observers, apart from those whose observation ends meanwhile.
    void notify() const;

    // In a debug build, stops the program when the caller is not on the main thread.
    void checkThread() const;

private:
    using List = std::map<int, std::function<void()>>;

    [[maybe_unused]] const MainThread* main_; // asked in builds with assertions only
    std::shared_ptr<List> list_ = std::make_shared<List>();
    int next_ = 0;
};

inline Observation Observers::add(std::function<void()> observer) {
    const int key = next_++;
    list_->emplace(key, std::move(observer));
    const auto forget = [list = std::weak_ptr(list_), key](void*) {
        if (const auto still = list.lock()) still->erase(key);
    };
    return Observation(std::shared_ptr<void>(static_cast<void*>(nullptr), forget));
}

inline void Observers::notify() const {
    // A copy, because an observer may begin and end observations, its own and those of others.
    const List observers = *list_;
    for (const auto& [key, observer] : observers) {
        if (list_->contains(key)) observer();
    }
}

inline void Observers::checkThread() const {
    assert(main_->isCurrent() && "a field of the model was used off the main thread");
}

// A field of the model. Every assignment notifies the observers before the new value is visible. Only the
// main thread may read and write it.
template <class T> class Published {
public:
    // `stored` is called with each new value after the assignment, but not with the first value.
    explicit Published(const MainThread& main, T value = {}, std::function<void(const T&)> stored = nullptr)
        : observers_(main), value_(std::move(value)), stored_(std::move(stored)) {}

    const T& get() const {
        observers_.checkThread();
        return value_;
    }
    operator const T&() const { return get(); }
    const T& operator*() const { return get(); }
    const T* operator->() const { return &get(); }

    Published& operator=(T value) {
        update([&](T& current) { current = std::move(value); });
        return *this;
    }

    // Changes the value in place by `change`, which takes a T&. Counts as one assignment.
    template <class Change> void update(Change change) {
        observers_.checkThread();
        observers_.notify();
        change(value_);
        if (stored_) stored_(value_);
    }

    // `observer` is called on the main thread when the value is about to change.
    [[nodiscard]] Observation observe(std::function<void()> observer) {
        return observers_.add(std::move(observer));
    }

private:
    Observers observers_;
    T value_;
    std::function<void(const T&)> stored_;
};

// What a group of fields derives from.
class FieldGroup {
public:
    explicit FieldGroup(const MainThread& main) : main_(main) {}

protected:
    const MainThread& main_; // the thread that the fields belong to
};

} // namespace loftmere
