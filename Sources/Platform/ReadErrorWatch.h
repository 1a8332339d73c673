#pragma once

#include <cstdint>

namespace orvane::platform {

/// Sees the errors that the system gives back while its thread reads files, through whatever reader of this
/// program or of the media libraries: a worn card, a share that went away. A file that is not there or ends
/// early is no error. Watches nest; the last one made on a thread goes first.
class ReadErrorWatch {
  public:
    ReadErrorWatch();
    ~ReadErrorWatch();
    ReadErrorWatch(const ReadErrorWatch&) = delete;
    ReadErrorWatch& operator=(const ReadErrorWatch&) = delete;

    bool hasSeenError() const { return hasSeenError_; }
    /// Those that any thread has reported so far: for a caller that is given what other threads read.
    static std::uint64_t errorsOfAllThreads() noexcept;

    /// For readers: the system has refused to read, on this thread.
    static void report() noexcept;
    /// For a caller that opens a file that may be absent: reports what `errno` says, unless nothing is there.
    static void reportUnlessAbsent(int errorNumber) noexcept;

  private:
    ReadErrorWatch* const outer_;
    bool hasSeenError_ = false;
};

} // namespace orvane::platform
