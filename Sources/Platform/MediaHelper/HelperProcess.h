#pragma once

#include "Platform/MediaHelper/HelperMemory.h"
#include "Platform/MediaHelper/HelperMessages.h"
#include "Platform/MediaHelper/HelperSocket.h"
#include "Platform/MediaHelper/MessageCoding.h"

#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>
#include <utility>

namespace orvane::platform::helper {

/// A process of the media helper's program, which reads the files that our own readers do not know. A file
/// that is made to attack it may crash it, block it or use up its memory; only this process ends then. Any
/// thread.
class Process {
  public:
    /// A free process or a new one; with the last pointer to it, it becomes free again. Null when the program
    /// is missing, is of another build or cannot be started.
    static std::shared_ptr<Process> borrow(Purpose purpose = Purpose::sound);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The answer; nothing when the process ended over this request, did not answer in time, or had ended
    /// before. Reports the helper's read errors to ReadErrorWatch.
    std::optional<std::string> ask(const std::string& request);
    /// The answer as a value of type Answer, as `ask`; nothing if it is damaged.
    template <class Answer, class... Values>
    std::optional<Answer> ask(Request request, const Values&... values) {
        const auto answer = ask(MessageWriter()(request, values...));
        if (!answer) return std::nullopt;
        try {
            return MessageReader(*answer).next<Answer>();
        } catch (const MessageError&) {
            end();
            return std::nullopt;
        }
    }
    /// Held from a read request until its samples are copied.
    std::recursive_mutex& mutex() { return mutex_; }
    std::span<const float> samples() const { return {static_cast<const float*>(memory_), sharedSamples}; }
    PictureMemory& pictures() const { return *static_cast<PictureMemory*>(memory_); }
    /// `mostPixels` of four bytes.
    const std::uint8_t* pixels() const { return static_cast<const std::uint8_t*>(memory_) + pixelsOffset; }

    /// It did not answer in time; false if it ended.
    bool wasTooSlow() const { return wasTooSlow_; }
    bool isRunning() const { return descriptor_ >= 0; }
    /// The clock that limits the wait for answers. Set before the first request.
    void useClock(WaitClock clock) { clock_ = std::move(clock); }

  private:
    Process(Purpose purpose, pid_t process, int descriptor, void* memory);
    static std::unique_ptr<Process> start(Purpose purpose);
    /// Null if there is none.
    static std::unique_ptr<Process> takeFree(Purpose purpose);
    /// It has not ended while it was free (out of memory, or killed by another process).
    bool isAlive() const;
    void end();

    friend std::optional<About> tryToStart();

    std::recursive_mutex mutex_;
    const pid_t owner_; ///< a forked child shares the socket and must not use it
    const pid_t process_;
    int descriptor_; ///< -1 after the end
    const Purpose purpose_;
    void* const memory_; ///< shared with the helper
    About about_;
    bool wasTooSlow_ = false;
    WaitClock clock_;
};

/// What a new process reports about itself, also one of another build; nothing when it does not start.
std::optional<About> tryToStart();

/// Whether a process was requested and did not start. Any thread.
bool hasStartFailed();
void setStartFailed();
/// The system's error if no memory could be shared with the last process that was to start; 0 if it could.
int sharingError();

/// Path of the helper's program; empty when it is not beside this one.
const std::string& programPath();

} // namespace orvane::platform::helper
