#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <optional>

namespace orvane::platform {

/// The earliest of the frames that several readers of one sound record. Any thread.
class EarliestFrame {
  public:
    void note(std::int64_t frame) noexcept {
        for (std::int64_t known = frame_; frame < known && !frame_.compare_exchange_weak(known, frame);) {
        }
    }
    /// Absent if none was recorded.
    std::optional<std::int64_t> frame() const noexcept {
        const std::int64_t known = frame_;
        return known == none ? std::nullopt : std::optional(known);
    }

  private:
    static constexpr std::int64_t none = std::numeric_limits<std::int64_t>::max();
    std::atomic<std::int64_t> frame_ = none;
};

} // namespace orvane::platform
