#pragma once

#include "Platform/Resumption.h"
#include "Platform/Stop.h"

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

namespace orvane::platform {

/// An asynchronous operation of the interface thread, written as a coroutine that reads from top to bottom.
/// It starts at once, runs on the interface thread only, and releases the thread where it waits. Destroying
/// the Task does not end the operation. An operation that belongs to an object holds it weakly and checks
/// after every wait whether it still exists.
///
/// An operation that was asked to stop ends with Stopped, thrown where it waits for work that can be stopped;
/// a task that it waits for is asked too.
class Task {
  public:
    struct promise_type;

    /// A task that has ended already.
    static Task ended();
    bool isDone() const { return state_->done; }
    /// Calls back on the interface thread when the operation has ended, at once if it has. The callback gets
    /// the exception that ended it.
    void whenDone(std::function<void(std::exception_ptr)> callback) const {
        if (state_->done)
            callback(state_->raised);
        else
            state_->callbacks.push_back(std::move(callback));
    }
    /// On the interface thread. The operation ends when the loop of that thread reaches it, not within this
    /// call.
    void requestStop() const { state_->stop.request_stop(); }

  private:
    struct State {
        bool done = false;
        std::exception_ptr raised;
        std::vector<std::function<void(std::exception_ptr)>> callbacks;
        std::stop_source stop;
    };
    struct Awaiter {
        std::shared_ptr<State> state;
        std::shared_ptr<std::stop_callback<std::function<void()>>> link = nullptr;

        bool await_ready() const { return state->done; }
        template <class Promise>
        void await_suspend(std::coroutine_handle<Promise> waiting) {
            auto resumption = std::make_shared<Resumption>(waiting);
            state->callbacks.emplace_back([resumption](const std::exception_ptr&) { resumption->resume(); });
            link = std::make_shared<std::stop_callback<std::function<void()>>>(
                waiting.promise().stopToken(), [own = state] { own->stop.request_stop(); });
        }
        void await_resume() {
            link.reset();
            if (state->raised) std::rethrow_exception(state->raised);
        }
    };
    explicit Task(std::shared_ptr<State> state) : state_(std::move(state)) {}

    std::shared_ptr<State> state_;

  public:
    /// `co_await task` waits for its end; its exception passes through.
    Awaiter operator co_await() const { return Awaiter{state_}; }
};

struct Task::promise_type {
    std::shared_ptr<State> state = std::make_shared<State>();

    // If a queue destroys the operation that this task waits for, this task is destroyed too.
    ~promise_type() { std::exchange(state->callbacks, {}); }
    promise_type() = default;
    promise_type(const promise_type&) = delete;
    promise_type& operator=(const promise_type&) = delete;

    Task get_return_object() { return Task(state); }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() { end(nullptr); }
    void unhandled_exception() { end(std::current_exception()); }
    std::stop_token stopToken() const { return state->stop.get_token(); }

  private:
    void end(std::exception_ptr raised) {
        state->raised = std::move(raised);
        state->done = true;
        // A callback may start another operation that waits for this one.
        for (auto& callback : std::exchange(state->callbacks, {})) callback(state->raised);
    }
};

inline Task Task::ended() { co_return; }

/// The running operations of one owner, to stop all of them. Interface thread.
class RunningTasks {
  public:
    Task add(Task task) {
        std::erase_if(tasks_, [](const Task& one) { return one.isDone(); });
        if (!task.isDone()) tasks_.push_back(task);
        return task;
    }
    void requestStop() const {
        for (const Task& task : tasks_) task.requestStop();
    }

  private:
    std::vector<Task> tasks_;
};

/// `co_await OwnStopToken()` returns the token of the calling operation, without a wait.
struct OwnStopToken {
    std::stop_token token = {};

    bool await_ready() const { return false; }
    template <class Promise>
    bool await_suspend(std::coroutine_handle<Promise> asking) {
        token = asking.promise().stopToken();
        return false;
    }
    std::stop_token await_resume() { return std::move(token); }
};

} // namespace orvane::platform
