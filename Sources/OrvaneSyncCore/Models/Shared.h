#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace orvane {

/// A value that its copies share until one of them changes it: a plain value to whoever looks at it, and
/// cheap to copy. Looking at shared copies from several threads is safe; changing one needs that copy to
/// itself.
template <class T>
class Shared {
  public:
    Shared(T value) : value_(std::make_shared<const T>(std::move(value))) {}
    /// Many values side by side in one piece of memory, which stays as long as any of them is held.
    static std::vector<Shared> together(std::vector<T> values) {
        const auto all = std::make_shared<const std::vector<T>>(std::move(values));
        std::vector<Shared> result;
        result.reserve(all->size());
        for (const T& value : *all) result.push_back(Shared(std::shared_ptr<const T>(all, &value)));
        return result;
    }

    const T& operator*() const { return *value_; }
    const T* operator->() const { return value_.get(); }
    operator const T&() const { return *value_; }

    /// A copy of this one's own to change. The reference holds until the next copy is made.
    T& edit() {
        auto own = std::make_shared<T>(*value_);
        T& value = *own;
        value_ = std::move(own);
        return value;
    }

  private:
    explicit Shared(std::shared_ptr<const T> value) : value_(std::move(value)) {}

    std::shared_ptr<const T> value_;
};

} // namespace orvane
