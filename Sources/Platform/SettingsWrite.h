#pragma once

#include "Platform/MainThread.h"
#include "Platform/Resumption.h"

#include <condition_variable>
#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace orvane::platform {

/// A change of settings that is being written to the disk. Readers see the new value at once. Any thread.
class SettingsWrite {
  public:
    bool isDone() const;
    /// Waits until it is written. Throws FileError if that failed. Never on the interface thread of a program
    /// with a window.
    void wait() const;
    /// Calls back when it is written, or with the error if that failed: at once if the result is known, else
    /// on the store's own thread.
    void whenDone(std::function<void(std::exception_ptr)> callback) const;

  private:
    friend class SettingsStore;
    struct State {
        std::mutex mutex;
        std::condition_variable ended;
        bool isDone = false;
        std::exception_ptr raised;
        std::vector<std::function<void(std::exception_ptr)>> callbacks;
    };
    void end(const std::exception_ptr& raised) const;

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// `co_await written(write, mainThread)`: continues on the interface thread when the change is on the disk;
/// throws if writing failed.
inline auto written(SettingsWrite write, MainThread& mainThread) {
    struct Awaiter {
        SettingsWrite write;
        MainThread& mainThread;

        bool await_ready() const { return write.isDone(); }
        void await_suspend(std::coroutine_handle<> waiting) const {
            auto resumption = std::make_shared<Resumption>(waiting);
            write.whenDone([&main = mainThread, resumption](const std::exception_ptr&) {
                main.post([resumption] { resumption->resume(); });
            });
        }
        void await_resume() const { write.wait(); }
    };
    return Awaiter{std::move(write), mainThread};
}

} // namespace orvane::platform
