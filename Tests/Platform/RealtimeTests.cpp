#include "Platform/MainThread.h"
#include "Platform/Realtime/RealtimeScope.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Realtime/TripleBuffer.h"
#include "Support/RealtimeWatch.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

namespace orvane::platform {
namespace {

TEST(Realtime, tripleBufferGivesTheNewestValueWhole) {
    struct Value {
        std::uint64_t a = 0, b = 0;
    };
    TripleBuffer<Value> buffer;
    EXPECT_FALSE(buffer.update());
    buffer.publish({1, 1});
    buffer.publish({2, 2});
    EXPECT_TRUE(buffer.update());
    EXPECT_EQ(buffer.current().a, 2U);
    EXPECT_FALSE(buffer.update());

    constexpr std::uint64_t last = 100000;
    std::thread writer([&] {
        for (std::uint64_t i = 3; i <= last; ++i) buffer.publish({i, i});
    });
    std::uint64_t seen = 2;
    std::uint64_t wrong = 0;
    while (seen < last) {
        if (!buffer.update()) {
            std::this_thread::yield();
            continue;
        }
        const Value& value = buffer.current();
        wrong += value.a != value.b || value.a <= seen ? 1 : 0;
        seen = value.a;
    }
    writer.join();
    EXPECT_EQ(wrong, 0U);
}

TEST(Realtime, consumersNeitherAllocateNorLock) {
    std::mutex mutex;
    const auto violationOf = [](const auto& work) {
        test::RealtimeWatch::reset();
        {
            const RealtimeScope scope;
            work();
        }
        return test::RealtimeWatch::firstViolation();
    };
    // Checks the watch itself: it reports forbidden calls, and none outside the scope.
    EXPECT_EQ(violationOf([] { delete new int(1); }), "allocation");
    if (test::RealtimeWatch::seesLocks()) {
        EXPECT_EQ(violationOf([&] { const std::lock_guard lock(mutex); }), "pthread_mutex_lock");
    }
    EXPECT_EQ(violationOf([] {}), "");

    TripleBuffer<std::array<float, 16>> levels;
    EXPECT_EQ(violationOf([&] {
                  for (int i = 0; i < 200; ++i) {
                      levels.publish({});
                      levels.update();
                  }
              }),
              "");
}

TEST(Realtime, aProcessorIsKeptFreeForPlayback) {
    const auto most = std::max<std::size_t>(std::thread::hardware_concurrency(), 2) - 1;
    std::atomic<std::size_t> running = 0;
    std::atomic<std::size_t> highest = 0;
    const PlaybackActivity playing;
    concurrently(200, 64, [&](std::size_t) {
        const std::size_t now = ++running;
        std::size_t seen = highest;
        while (seen < now && !highest.compare_exchange_weak(seen, now)) {
        }
        std::this_thread::yield();
        --running;
    });
    EXPECT_LE(highest, most);
}

TEST(Realtime, aProcessorIsGivenUpWhenPlaybackBeginsAndUsedAgainWhenItEnds) {
    const auto all = std::max<std::size_t>(std::thread::hardware_concurrency(), 2);
    std::atomic<std::size_t> running = 0, runningOfPlayback = 0, highestOfPlayback = 0;
    std::atomic<bool> isFull = false, isFullAgain = false;
    std::optional<PlaybackActivity> playing;
    enum class Stage { before, during, after };
    std::atomic<Stage> stage = Stage::before;
    // Holds the thread until all threads work, which shows that there are as many.
    const auto waitUntilFull = [&](std::atomic<bool>& isReached) {
        constexpr int most = 1'000'000; // then the test fails instead of waiting forever
        for (int i = 0; i < most && !isReached; ++i) {
            if (running == all) isReached = true;
            std::this_thread::yield();
        }
    };
    const std::size_t begin = all - 1, end = begin + 40, count = end + 2 * all;
    concurrently(count, all, [&](std::size_t index) {
        const Stage atStart = stage;
        ++running;
        if (index <= begin) waitUntilFull(isFull);
        // All threads are at work when playback begins.
        while (index < begin && isFull && stage == Stage::before) std::this_thread::yield();
        if (index == begin) {
            playing.emplace();
            stage = Stage::during;
        }
        if (atStart == Stage::during) {
            const std::size_t now = ++runningOfPlayback;
            std::size_t seen = highestOfPlayback;
            while (seen < now && !highestOfPlayback.compare_exchange_weak(seen, now)) {
            }
            for (int i = 0; i < 5; ++i) std::this_thread::yield();
            --runningOfPlayback;
        }
        if (index == end) {
            playing.reset();
            stage = Stage::after;
        }
        if (atStart == Stage::after) waitUntilFull(isFullAgain);
        --running;
    });
    EXPECT_TRUE(isFull);
    EXPECT_LE(highestOfPlayback, all - 1);
    EXPECT_TRUE(isFullAgain);
}

TEST(Realtime, threadsHaveTheirNamesAndPriorities) {
    std::string name;
    bool isNormal = false;
    startThread("orvane-reader-of-pictures", ThreadPriority::normal, [&](const std::stop_token&) {
        std::array<char, 32> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
        isNormal = setThisThreadPriority(ThreadPriority::normal);
    }).join();
    EXPECT_EQ(name, "orvane-reader-o");
    EXPECT_TRUE(isNormal);
}

} // namespace
} // namespace orvane::platform
