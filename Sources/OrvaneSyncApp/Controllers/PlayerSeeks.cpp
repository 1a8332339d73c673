#include "OrvaneSyncApp/Controllers/PlayerSeeks.h"

#include <utility>

namespace orvane {

void PlayerSeeks::begin(platform::Player& player, platform::MediaTime time, std::function<void()> shown) {
    target_ = time;
    const std::uint64_t number = ++newest_;
    player.seek(time, [weak = weak_from_this(), number, shown = std::move(shown)](bool isShown) {
        const auto self = weak.lock();
        if (!self || self->newest_ != number) return;
        self->target_.reset();
        const auto waiting = std::exchange(self->waiting_, {});
        if (isShown && shown) shown();
        for (const auto& one : waiting) one->end();
    });
}

void PlayerSeeks::forget() {
    ++newest_;
    target_.reset();
    for (const auto& one : std::exchange(waiting_, {})) one->end();
}

platform::Task PlayerSeeks::shown() {
    if (!target_) return platform::Task::ended();
    return waiting_.emplace_back(std::make_shared<platform::Completion>(mainThread_))->task();
}

} // namespace orvane
