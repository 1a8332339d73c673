#include "Platform/Realtime/Threads.h"

#include <atomic>
#include <pthread.h>
#include <sched.h>
#include <string>

namespace orvane::platform {

namespace {

constexpr std::size_t longestThreadName = 15;
// Above the scheduler's ordinary threads, below the system's own real-time ones.
constexpr int realtimePriority = 10;

std::atomic<int> playing = 0;

} // namespace

void nameThisThread(std::string_view name) {
    pthread_setname_np(pthread_self(), std::string(name.substr(0, longestThreadName)).c_str());
}

bool setThisThreadPriority(ThreadPriority priority) {
    sched_param parameters{};
    parameters.sched_priority = priority == ThreadPriority::realtime ? realtimePriority : 0;
    const int policy = priority == ThreadPriority::realtime ? SCHED_FIFO : SCHED_OTHER;
    return pthread_setschedparam(pthread_self(), policy, &parameters) == 0;
}

std::jthread startThread(std::string_view name, ThreadPriority priority,
                         std::function<void(std::stop_token)> work) {
    return std::jthread([name = std::string(name), priority, work = std::move(work)](std::stop_token stop) {
        nameThisThread(name);
        if (priority != ThreadPriority::normal) setThisThreadPriority(priority);
        work(std::move(stop));
    });
}

PlaybackActivity::PlaybackActivity() { ++playing; }
PlaybackActivity::~PlaybackActivity() { --playing; }
bool PlaybackActivity::isUnderWay() { return playing > 0; }

} // namespace orvane::platform
