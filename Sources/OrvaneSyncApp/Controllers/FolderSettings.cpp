#include "OrvaneSyncApp/Controllers/FolderSettings.h"

#include <chrono>
#include <stdexcept>

namespace orvane {

namespace {

constexpr std::chrono::milliseconds settingsDebounce{500};

} // namespace

void FolderSettings::observe() {
    observation_ = settings_->onChange([weak = weak_from_this(), main = mainThread_](const std::string&) {
        main->post([weak] {
            if (const auto self = weak.lock()) self->wait();
        });
    });
}

void FolderSettings::wait() {
    if (timer_) timer_->cancel();
    timer_ = mainThread_->after(settingsDebounce, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->notifyNowIfChanged();
    });
}

void FolderSettings::notifyNowIfChanged() {
    if (!timer_) return;
    timer_->cancel();
    timer_.reset();
    if (whenChanged) whenChanged();
}

std::vector<std::string> FolderSettings::apply(const std::string& snapshot) const {
    std::vector<std::string> changed;
    try {
        for (const auto& [key, value] : presets_.values(snapshot))
            if (settings_->valueByName(key) != value) changed.push_back(key);
        presets_.applySnapshot(snapshot, *settings_);
    } catch (const std::runtime_error&) {
        return {}; // the settings stay as they are, and the session opens anyway
    }
    return changed;
}

} // namespace orvane
