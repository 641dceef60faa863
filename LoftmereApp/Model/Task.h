#pragma once

#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace loftmere {

// A running operation of the model. It starts at once, on the caller's thread, and runs to its end whether or
// not anyone keeps the task or waits for it with `co_await`. Main thread only.
//
// An operation whose model has gone away is abandoned: the rest of it never runs, and neither does the rest
// of what waits for it. The locals of both are destroyed.
template <class T = void> class Task {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    struct State {
        std::optional<Value> value; // present once the operation has ended
        std::vector<std::coroutine_handle<>> waiters;

        std::vector<std::coroutine_handle<>> takeWaiters() { return std::exchange(waiters, {}); }
    };

    // Destroys the finished operation first, so that what it holds is gone when a waiter goes on.
    struct End {
        bool await_ready() const noexcept { return false; }
        template <class Promise> void await_suspend(std::coroutine_handle<Promise> self) const noexcept {
            const auto waiters = self.promise().state->takeWaiters();
            self.destroy();
            for (const auto waiter : waiters) waiter.resume();
        }
        void await_resume() const noexcept {}
    };

    struct PromiseBase {
        std::shared_ptr<State> state = std::make_shared<State>();

        PromiseBase() = default;
        PromiseBase(const PromiseBase&) = delete;
        PromiseBase& operator=(const PromiseBase&) = delete;
        ~PromiseBase() {
            for (const auto waiter : state->takeWaiters()) waiter.destroy();
        }

        Task get_return_object() { return Task(state); }
        std::suspend_never initial_suspend() const noexcept { return {}; }
        End final_suspend() const noexcept { return {}; }
        [[noreturn]] void unhandled_exception() const { std::terminate(); }
    };

    struct ValuePromise : PromiseBase {
        void return_value(Value value) { this->state->value = std::move(value); }
    };

    struct VoidPromise : PromiseBase {
        void return_void() { this->state->value.emplace(); }
    };

public:
    using promise_type = std::conditional_t<std::is_void_v<T>, VoidPromise, ValuePromise>;

    bool isDone() const { return state_->value.has_value(); }

    // What the operation answered; only when it is done.
    const Value& value() const { return *state_->value; }

    auto operator co_await() const {
        struct Awaiter {
            std::shared_ptr<State> state;
            bool await_ready() const { return state->value.has_value(); }
            void await_suspend(std::coroutine_handle<> waiter) { state->waiters.push_back(waiter); }
            T await_resume() const {
                if constexpr (!std::is_void_v<T>) return *state->value;
            }
        };
        return Awaiter{state_};
    }

private:
    explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}

    std::shared_ptr<State> state_;
};

} // namespace loftmere
