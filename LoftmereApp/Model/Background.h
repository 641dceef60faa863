#pragma once

#include "LoftmereApp/Model/MainThread.h"

#include <coroutine>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace loftmere {

// A coroutine that waits to go on. It is destroyed if nobody lets it.
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

// Starts a thread that runs `job` and is nobody's to wait for. Where no thread can be had the caller does the
// work.
void runDetached(std::function<void()> job);

// The slow part of a model operation: `co_await Background(main, life, body)` runs `body` on a thread of its
// own and goes on with its answer on the main thread. If `life` has ended by then, the coroutine is destroyed
// instead: a body that ends after the model is gone has no effect. `body` must hold copies of all it needs
// and must not throw.
template <class Body> class Background {
public:
    using Value = std::invoke_result_t<Body&>;

    Background(std::shared_ptr<MainThread> main, std::weak_ptr<const void> life, Body body)
        : main_(std::move(main)), life_(std::move(life)), body_(std::move(body)) {}

    bool await_ready() const noexcept { return false; }

    void await_suspend(std::coroutine_handle<> caller) {
        // The frame that holds this object lives until the continuation has been used, so the thread may
        // write the answer here. But nothing in it may keep the main thread alive, in whose queue the frame
        // may wait: so what the body holds goes with the job.
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

} // namespace loftmere
