#pragma once

#include "Platform/MainThread.h"

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvane::platform {

/// A waiting coroutine on its way through queues. It is ended, not lost, when the queue that should have
/// resumed it goes away first.
class Resumption {
  public:
    explicit Resumption(std::coroutine_handle<> waiting) : waiting_(waiting) {}
    ~Resumption() {
        if (waiting_) waiting_.destroy();
    }
    Resumption(const Resumption&) = delete;
    Resumption& operator=(const Resumption&) = delete;
    void resume() { std::exchange(waiting_, nullptr).resume(); }

  private:
    std::coroutine_handle<> waiting_;
};

/// An asynchronous operation of the interface thread, written as a coroutine that reads from top to bottom.
/// It starts at once, runs on the interface thread only, and gives the thread up where it waits. Throwing the
/// Task away does not end the operation. An operation that belongs to an object holds it weakly and looks for
/// it again after every wait.
class Task {
  public:
    struct promise_type;

    /// One that has nothing to wait for.
    static Task ended();
    bool isDone() const { return state_->done; }
    /// Calls back on the interface thread when the operation has ended, at once if it has. An exception that
    /// ended it is given along.
    void whenDone(std::function<void(std::exception_ptr)> callback) const {
        if (state_->done)
            callback(state_->raised);
        else
            state_->callbacks.push_back(std::move(callback));
    }

    /// `co_await task` waits for its end; its exception passes through.
    auto operator co_await() const {
        struct Awaiter {
            std::shared_ptr<State> state;
            bool await_ready() const { return state->done; }
            void await_suspend(std::coroutine_handle<> waiting) const {
                auto resumption = std::make_shared<Resumption>(waiting);
                state->callbacks.emplace_back(
                    [resumption](const std::exception_ptr&) { resumption->resume(); });
            }
            void await_resume() const {
                if (state->raised) std::rethrow_exception(state->raised);
            }
        };
        return Awaiter{state_};
    }

  private:
    struct State {
        bool done = false;
        std::exception_ptr raised;
        std::vector<std::function<void(std::exception_ptr)>> callbacks;
    };
    explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}

    std::shared_ptr<State> state_;
};

struct Task::promise_type {
    std::shared_ptr<State> state = std::make_shared<State>();

    Task get_return_object() { return Task(state); }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() { end(nullptr); }
    void unhandled_exception() { end(std::current_exception()); }

  private:
    void end(std::exception_ptr raised) {
        state->raised = std::move(raised);
        state->done = true;
        // A callback may begin another operation that waits for this one.
        for (auto& callback : std::exchange(state->callbacks, {})) callback(state->raised);
    }
};

inline Task Task::ended() { co_return; }

/// `co_await onQueue(queue, mainThread, work)`: runs the work on the queue and comes back to the interface
/// thread with what it gave. Its exception passes through.
template <class Work>
auto onQueue(SerialQueue& queue, MainThread& mainThread, Work work) {
    using Result = std::invoke_result_t<Work&>;
    using Kept = std::conditional_t<std::is_void_v<Result>, bool, Result>;
    struct Outcome {
        std::optional<Kept> value;
        std::exception_ptr raised;
    };
    struct Awaiter {
        SerialQueue& queue;
        MainThread& mainThread;
        std::shared_ptr<Work> work;
        std::shared_ptr<Outcome> outcome = std::make_shared<Outcome>();

        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) {
            auto resumption = std::make_shared<Resumption>(waiting);
            // Copies only: the coroutine, and this awaiter in it, may be gone before the work has run.
            queue.post([&main = mainThread, todo = std::move(work), kept = outcome,
                        resumption = std::move(resumption)]() mutable {
                try {
                    if constexpr (std::is_void_v<Result>) {
                        (*todo)();
                        kept->value = true;
                    } else {
                        kept->value.emplace((*todo)());
                    }
                } catch (...) {
                    kept->raised = std::current_exception();
                }
                todo.reset();
                main.post([resumption = std::move(resumption)] { resumption->resume(); });
            });
        }
        Result await_resume() {
            if (outcome->raised) std::rethrow_exception(outcome->raised);
            if constexpr (!std::is_void_v<Result>) return std::move(*outcome->value);
        }
    };
    return Awaiter{queue, mainThread, std::make_shared<Work>(std::move(work))};
}

} // namespace orvane::platform
