#pragma once

#include "LoftmereApp/Model/AppModel.h"

#include <coroutine>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

// What the model's operations are made of. For the model's own sources only.
namespace loftmere {

// A suspended coroutine, destroyed unless it is resumed.
class Continuation {
public:
    explicit Continuation(std::coroutine_handle<> handle) : handle_(handle) {}
    Continuation(const Continuation&) = delete;
    Continuation& operator=(const Continuation&) = delete;
    ~Continuation();

    void resume();

private:
    std::coroutine_handle<> handle_;
};

// Runs `job` on a new thread that nobody waits for. If no thread can be started, the caller runs it.
void runDetached(std::function<void()> job);

// The slow part of an operation: `co_await Background(main, life, body)` runs `body` on a thread of its own
// and resumes with its answer on the main thread. If `life` has ended by then, the coroutine is destroyed
// instead, so a body that ends after the model is gone has no effect. `body` must hold copies of all it needs
// and must not throw.
template <class Body> class Background {
public:
    using Value = std::invoke_result_t<Body&>;

    Background(std::shared_ptr<MainThread> main, std::weak_ptr<const void> life, Body body)
        : main_(std::move(main)), life_(std::move(life)), body_(std::move(body)) {}

    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> caller) {
        // The coroutine frame holds this object and lives until the continuation has been used, so the thread
        // may write the answer here. The frame may wait in the main thread's queue, so nothing in it may keep
        // the main thread alive: what the body holds goes with the job.
        runDetached([answer = &answer_, main = std::move(main_), life = std::move(life_),
                     body = std::move(body_),
                     continuation = std::make_shared<Continuation>(caller)]() mutable {
            answer->emplace(body());
            main->post([life = std::move(life), continuation = std::move(continuation)] {
                if (!life.expired()) continuation->resume();
            });
        });
    }

    Value await_resume() { return std::move(*answer_); }

private:
    std::shared_ptr<MainThread> main_;
    std::weak_ptr<const void> life_;
    Body body_;
    std::optional<Value> answer_;
};

// The private part of the model.
struct AppModel::Work {
    const std::shared_ptr<MainThread> main;
    const Scanners scanners;
    const std::shared_ptr<const bool> life = std::make_shared<const bool>(true); // ends with the model

    // Runs `body` as `Background` does, for as long as the model lives.
    template <class Body> Background<Body> background(Body body) const {
        return Background<Body>(main, life, std::move(body));
    }

    // A function that posts main-thread tasks which do nothing once the model is gone. It and its copies may
    // be called on any thread.
    std::function<void(std::function<void()>)> poster() const;

    // Enters a running operation into `ops`, and takes it out again.
    static void begin(AppModel& model, const std::string& key, std::string label);
    static void end(AppModel& model, const std::string& key);
};

} // namespace loftmere
