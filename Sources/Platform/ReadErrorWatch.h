#pragma once

#include <cstdint>

namespace orvane::platform {

/// Counts the errors that the system returns while its thread reads files, through any reader of this program
/// or of the media libraries: a worn card, a disconnected share. A missing file or an early end is no error.
/// Watches nest; the last one made on a thread is destroyed first.
class ReadErrorWatch {
  public:
    ReadErrorWatch();
    ~ReadErrorWatch();
    ReadErrorWatch(const ReadErrorWatch&) = delete;
    ReadErrorWatch& operator=(const ReadErrorWatch&) = delete;

    bool hasSeenError() const { return hasSeenError_; }
    /// The errors that any thread has reported so far: for a caller that uses what other threads read.
    static std::uint64_t errorsOfAllThreads() noexcept;

    /// Called by readers: the system has refused to read, on this thread.
    static void report() noexcept;
    /// For a caller that opens a file that may be absent: reports the error `errorNumber`, unless it says
    /// that there is no file.
    static void reportUnlessAbsent(int errorNumber) noexcept;

  private:
    ReadErrorWatch* const outer_;
    bool hasSeenError_ = false;
};

} // namespace orvane::platform
