#pragma once

namespace orvane::platform {

/// Marks code of this thread that runs in the callback of an audio device: while it exists, the thread must
/// not allocate, free, lock or wait. Costs one counter. The tests replace the allocator and the locks by ones
/// that report a call made under this mark.
class RealtimeScope {
  public:
    RealtimeScope() noexcept { ++depth(); }
    ~RealtimeScope() { --depth(); }
    RealtimeScope(const RealtimeScope&) = delete;
    RealtimeScope& operator=(const RealtimeScope&) = delete;

    /// Whether the calling thread is in such code.
    static bool isActive() noexcept { return depth() > 0; }

  private:
    static int& depth() noexcept {
        static constinit thread_local int depth = 0;
        return depth;
    }
};

} // namespace orvane::platform
