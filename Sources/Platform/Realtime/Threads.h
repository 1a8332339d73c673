#pragma once

#include <functional>
#include <string_view>
#include <thread>

namespace orvane::platform {

enum class ThreadPriority {
    background, ///< work that nobody waits for; gives way to everything else
    normal,
    realtime ///< feeds an audio device: before all other threads, where the system allows it
};

/// Names the calling thread for debuggers and `top`; the system keeps the first 15 bytes.
void nameThisThread(std::string_view name);
/// Of the calling thread. False where the system did not allow it; the thread then runs as before.
bool setThisThreadPriority(ThreadPriority priority);

/// A thread with a name and a priority; where the priority is refused it runs without. Throws
/// std::system_error where the system has no thread left.
std::jthread startThread(std::string_view name, ThreadPriority priority,
                         std::function<void(std::stop_token)> work);

/// While one of these lives something plays: `concurrently` then leaves a processor to it. Any thread.
class PlaybackActivity {
  public:
    PlaybackActivity();
    ~PlaybackActivity();
    PlaybackActivity(const PlaybackActivity&) = delete;
    PlaybackActivity& operator=(const PlaybackActivity&) = delete;

    static bool isUnderWay();
};

} // namespace orvane::platform
