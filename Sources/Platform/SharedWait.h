#pragma once

#include "Platform/MainThread.h"
#include "Platform/Resumption.h"
#include "Platform/Stop.h"
#include "Platform/Task.h"

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <stop_token>
#include <utility>

namespace orvane::platform {

/// `co_await shared(task, mainThread)` waits for an operation that others also wait for: stopping the waiting
/// operation ends only the wait, and the shared operation continues. Its exception passes through.
inline auto shared(Task task, const std::shared_ptr<MainThread>& mainThread) {
    struct Awaiter {
        Task task;
        std::weak_ptr<MainThread> mainThread;
        std::stop_token token = {};
        std::shared_ptr<std::exception_ptr> raised = std::make_shared<std::exception_ptr>();
        std::shared_ptr<std::stop_callback<std::function<void()>>> whenStopped = nullptr;

        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<Task::promise_type> waiting) {
            token = waiting.promise().stopToken();
            const auto way = std::make_shared<ReturnWay>(waiting);
            const auto goOn = [way, main = mainThread] {
                auto resumption = way->take();
                const auto thread = main.lock();
                if (!resumption || !thread) return;
                ReturnWay::post(*thread, std::move(resumption), "shared wait");
            };
            whenStopped = std::make_shared<std::stop_callback<std::function<void()>>>(token, goOn);
            task.whenDone([goOn, kept = raised](std::exception_ptr how) {
                *kept = std::move(how);
                goOn();
            });
        }
        void await_resume() {
            whenStopped.reset();
            throwIfStopped(token);
            if (*raised) std::rethrow_exception(*raised);
        }
    };
    return Awaiter{std::move(task), mainThread};
}

} // namespace orvane::platform
