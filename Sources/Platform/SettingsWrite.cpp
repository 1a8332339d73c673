#include "Platform/SettingsWrite.h"

#include "Platform/InterfaceThread.h"

namespace orvane::platform {

void SettingsWrite::wait() const {
    if (!isDone()) assertMayBlock("waiting for the settings");
    std::unique_lock lock(state_->mutex);
    state_->ended.wait(lock, [this] { return state_->isDone; });
    if (state_->raised) std::rethrow_exception(state_->raised);
}

bool SettingsWrite::isDone() const {
    const std::lock_guard lock(state_->mutex);
    return state_->isDone;
}

void SettingsWrite::whenDone(std::function<void(std::exception_ptr)> callback) const {
    {
        const std::lock_guard lock(state_->mutex);
        if (!state_->isDone) {
            state_->callbacks.push_back(std::move(callback));
            return;
        }
    }
    callback(state_->raised);
}

void SettingsWrite::end(const std::exception_ptr& raised) const {
    std::vector<std::function<void(std::exception_ptr)>> callbacks;
    {
        const std::lock_guard lock(state_->mutex);
        state_->isDone = true;
        state_->raised = raised;
        callbacks = std::exchange(state_->callbacks, {});
    }
    state_->ended.notify_all();
    for (const auto& callback : callbacks) callback(raised);
}

} // namespace orvane::platform
