#pragma once

#include "Platform/Subscription.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orvane::platform {

/// Callbacks that are called as long as their subscriptions exist. A copy calls the same callbacks: an owner
/// that shares this between threads copies it under a lock and notifies after releasing the lock.
template <class... Arguments>
class Listeners {
  public:
    using Callback = std::function<void(Arguments...)>;

    Subscription add(Callback callback) {
        std::erase_if(callbacks_, [](const auto& one) { return one.expired(); });
        auto added = std::make_shared<Callback>(std::move(callback));
        callbacks_.push_back(added);
        return added;
    }

    /// In the order of subscription. A callback may subscribe, unsubscribe and destroy the owner. A callback
    /// that was added or removed meanwhile is not called.
    void notify(Arguments... what) const {
        const auto callbacks = callbacks_;
        for (const auto& one : callbacks)
            if (const auto callback = one.lock()) (*callback)(what...);
    }

  private:
    std::vector<std::weak_ptr<Callback>> callbacks_;
};

} // namespace orvane::platform
