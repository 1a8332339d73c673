#pragma once

#include <memory>
#include <utility>
#include <vector>

namespace orvane {

/// A value that is shared by its copies until one of them is changed: it behaves as a plain value and is
/// cheap to copy. Reading shared copies from several threads is safe; a copy that is changed must not be used
/// by another thread.
template <class T>
class Shared {
  public:
    Shared(T value) : value_(std::make_shared<const T>(std::move(value))) {}
    /// Many values in one block of memory, which is kept as long as any of them is held.
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

    /// Makes this object's own copy of the value and returns it for changes. The reference is valid until the
    /// next copy of this object is made.
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
