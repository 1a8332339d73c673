#pragma once

#include <functional>
#include <string_view>
#include <thread>

namespace orvane::platform {

enum class ThreadPriority {
    normal,
    realtime ///< feeds an audio device; before all other threads, if the system allows it
};

/// Names the calling thread for debuggers and `top`; the system keeps the first 15 bytes.
void nameThisThread(std::string_view name);
/// Sets it for the calling thread. False if the system did not allow it; the thread then runs as before.
bool setThisThreadPriority(ThreadPriority priority);

/// Starts a thread with a name and a priority; if the priority is refused it runs with the usual one. Throws
/// std::system_error if the system has no thread left.
std::jthread startThread(std::string_view name, ThreadPriority priority,
                         std::function<void(std::stop_token)> work);

/// Marks that something plays while one of these exists: `concurrently` then leaves one processor free. Any
/// thread.
class PlaybackActivity {
  public:
    PlaybackActivity();
    ~PlaybackActivity();
    PlaybackActivity(const PlaybackActivity&) = delete;
    PlaybackActivity& operator=(const PlaybackActivity&) = delete;

    static bool isUnderWay();
};

} // namespace orvane::platform
