#pragma once

#include "Platform/MainThread.h"
#include "Platform/Resumption.h"
#include "Platform/Stop.h"
#include "Platform/Task.h"

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <type_traits>
#include <utility>

namespace orvane::platform {

/// `co_await onQueue(queue, mainThread, work)`: runs the work on the queue and continues on the interface
/// thread with its result. Its exception passes through.
///
/// Work that takes a std::stop_token gets that of the operation and can be stopped: the operation then
/// continues at once, with Stopped, and the result of the work is discarded. Such work owns all that it uses,
/// as the queue may abandon it. Work without a token always runs to its end.
///
/// The waiting operation must not own the main thread, in a parameter or a variable: work that waits on that
/// thread owns the operation, and neither would ever be destroyed.
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
