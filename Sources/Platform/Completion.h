#pragma once

#include "Platform/MainThread.h"
#include "Platform/Resumption.h"
#include "Platform/Stop.h"
#include "Platform/Task.h"

#include <coroutine>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>

namespace orvane::platform {

/// An operation that ends with a callback, as a task. Its maker keeps it together with the callback; if it is
/// destroyed without a call the task ends too. Interface thread.
class Completion {
  public:
    explicit Completion(const std::shared_ptr<MainThread>& mainThread) : task_(wait(state_, mainThread)) {}
    ~Completion() { end(); }
    Completion(const Completion&) = delete;
    Completion& operator=(const Completion&) = delete;

    /// Ends with `end`, or with Stopped after a request to stop.
    const Task& task() const { return task_; }
    void end() {
        state_->isEnded = true;
        state_->resume();
    }

  private:
    struct State {
        bool isEnded = false;
        std::shared_ptr<Resumption> waiting;

        void resume() {
            if (const auto resumption = std::exchange(waiting, nullptr)) resumption->resume();
        }
    };
    struct Awaiter {
        std::shared_ptr<State> state;
        std::weak_ptr<MainThread> mainThread;
        std::stop_token token = {};
        std::unique_ptr<std::stop_callback<std::function<void()>>> whenStopped = nullptr;

        bool await_ready() const { return state->isEnded; }
        void await_suspend(std::coroutine_handle<Task::promise_type> waiting) {
            state->waiting = std::make_shared<Resumption>(waiting);
            token = waiting.promise().stopToken();
            whenStopped = std::make_unique<std::stop_callback<std::function<void()>>>(
                token, [main = mainThread, weak = std::weak_ptr(state)] {
                    if (const auto thread = main.lock())
                        thread->post([weak] {
                            if (const auto own = weak.lock()) own->resume();
                        });
                });
        }
        void await_resume() {
            whenStopped.reset();
            if (!state->isEnded) throwIfStopped(token);
        }
    };
    static Task wait(std::shared_ptr<State> state, std::weak_ptr<MainThread> mainThread) {
        Awaiter ending{std::move(state), std::move(mainThread)};
        co_await ending;
    }

    const std::shared_ptr<State> state_ = std::make_shared<State>();
    const Task task_;
};

} // namespace orvane::platform
