#pragma once

#include "Platform/InterfaceThread.h"
#include "Platform/MainThread.h"
#include "Platform/Stop.h"

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvane::platform {

/// A waiting coroutine that is queued to be resumed. If the queue is destroyed before it resumes the
/// coroutine, the coroutine ends.
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

/// Resumes a suspended operation on the interface thread, once: after the work that it waits for, or after a
/// stop, whichever comes first.
class ReturnWay {
  public:
    explicit ReturnWay(std::coroutine_handle<> waiting) : waiting_(std::make_shared<Resumption>(waiting)) {}
    std::shared_ptr<Resumption> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(waiting_, nullptr);
    }
    /// `operation` names the resumed work in reports.
    static void post(MainThread& mainThread, std::shared_ptr<Resumption> waiting, const char* operation) {
        mainThread.post([waiting = std::move(waiting), operation] {
            nameInterfaceWork(operation);
            waiting->resume();
        });
    }

  private:
    std::mutex mutex_;
    std::shared_ptr<Resumption> waiting_;
};

/// `co_await onQueue(queue, mainThread, work)`: runs the work on the queue and continues on the interface
/// thread with its result. Its exception passes through.
///
/// Work that takes a std::stop_token gets that of the operation and can be stopped: the operation then
/// continues at once, with Stopped, and the result of the work is discarded. Such work owns all that it uses,
/// as the queue may abandon it. Work without a token always runs to its end.
template <class Work>
auto onQueue(SerialQueue& queue, const std::shared_ptr<MainThread>& mainThread, Work work,
             const char* caller = __builtin_FUNCTION()) { // both compilers have this builtin
    constexpr bool canStop = std::is_invocable_v<Work&, std::stop_token>;
    using Result = typename std::conditional_t<canStop, std::invoke_result<Work&, std::stop_token>,
                                               std::invoke_result<Work&>>::type;
    using Kept = std::conditional_t<std::is_void_v<Result>, bool, Result>;
    struct Outcome {
        std::optional<Kept> value;
        std::exception_ptr raised;
    };
    struct Awaiter {
        SerialQueue& queue;
        std::weak_ptr<MainThread> mainThread;
        std::shared_ptr<Work> work;
        const char* operation;
        std::shared_ptr<Outcome> outcome = std::make_shared<Outcome>();
        std::stop_token token = {};
        std::shared_ptr<std::stop_callback<std::function<void()>>> whenStopped = nullptr;

        static Outcome outcomeOf(Work& work, [[maybe_unused]] const std::stop_token& stop) {
            Outcome result;
            try {
                const auto call = [&]() -> Result {
                    if constexpr (canStop)
                        return work(stop);
                    else
                        return work();
                };
                if constexpr (std::is_void_v<Result>) {
                    call();
                    result.value = true;
                } else {
                    result.value.emplace(call());
                }
            } catch (...) {
                result.raised = std::current_exception();
            }
            return result;
        }

        bool await_ready() const { return false; }
        bool await_suspend(std::coroutine_handle<Task::promise_type> waiting) {
            const std::stop_token stop = canStop ? waiting.promise().stopToken() : std::stop_token();
            token = stop;
            if (stop.stop_requested()) return false;
            // Copies only: the coroutine, and this awaiter in it, may be destroyed before the work has run. A
            // queue does not begin stopped work and may destroy it before the callback of the stop runs, so
            // that callback also holds the return way; the first one to take it breaks the reference cycle.
            const auto way = std::make_shared<ReturnWay>(waiting);
            if (canStop)
                whenStopped = std::make_shared<std::stop_callback<std::function<void()>>>(
                    stop, [main = mainThread, way, name = operation] {
                        auto resumption = way->take();
                        const auto thread = main.lock();
                        if (!resumption || !thread) return;
                        ReturnWay::post(*thread, std::move(resumption), name);
                    });
            queue.post(
                [main = mainThread, todo = std::move(work), kept = outcome, way, stop,
                 name = operation]() mutable {
                    Outcome result = outcomeOf(*todo, stop);
                    todo.reset();
                    auto resumption = way->take();
                    const auto thread = main.lock();
                    if (!resumption || !thread) return;
                    *kept = std::move(result);
                    ReturnWay::post(*thread, std::move(resumption), name);
                },
                stop);
            return true;
        }
        Result await_resume() {
            whenStopped.reset();
            throwIfStopped(token); // also if the work has just ended
            if (outcome->raised) std::rethrow_exception(outcome->raised);
            if constexpr (!std::is_void_v<Result>) return std::move(*outcome->value);
        }
    };
    return Awaiter{queue, mainThread, std::make_shared<Work>(std::move(work)), caller};
}

} // namespace orvane::platform
