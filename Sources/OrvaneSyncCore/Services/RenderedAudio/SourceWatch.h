#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/RenderKey.h"
#include "Platform/ReadErrorWatch.h"

#include <cstdint>
#include <functional>
#include <utility>

namespace orvane {

/// Whether a recording was unchanged while it was read by its thread. A rendering of a file that became
/// shorter, or that a network share failed to deliver, must not be found by its key.
class SourceWatch {
  public:
    /// `key` is called now and at the end.
    explicit SourceWatch(std::function<std::uint64_t()> key) : key_(std::move(key)), before_(key_()) {}

    std::uint64_t key() const { return before_; }
    bool isAsBefore() const { return !errors_.hasSeenError() && key_() == before_; }

  private:
    std::function<std::uint64_t()> key_;
    std::uint64_t before_;
    platform::ReadErrorWatch errors_;
};

} // namespace orvane
