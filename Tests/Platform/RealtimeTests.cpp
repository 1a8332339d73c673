#include "Platform/MainThread.h"
#include "Platform/Realtime/RealtimeScope.h"
#include "Platform/Realtime/Ring.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Realtime/TripleBuffer.h"
#include "Support/RealtimeWatch.h"

#include <gtest/gtest.h>

#include <array>
#include <mutex>
#include <numeric>
#include <thread>

namespace orvane::platform {
namespace {

TEST(Realtime, ringKeepsOrderBetweenTwoThreads) {
    constexpr std::uint64_t count = 200000;
    Ring<std::uint64_t> ring(1000);
    EXPECT_EQ(ring.capacity(), 1024U);
    std::thread producer([&] {
        std::array<std::uint64_t, 97> piece{};
        std::uint64_t next = 0;
        for (std::size_t size = 1; next < count; size = size % piece.size() + 1) {
            const std::size_t wanted = std::min<std::uint64_t>(size, count - next);
            std::iota(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(wanted), next);
            const std::size_t taken = ring.write(std::span(piece).first(wanted));
            if (taken == 0) std::this_thread::yield();
            next += taken;
        }
    });
    std::array<std::uint64_t, 61> piece{};
    std::uint64_t expected = 0;
    std::uint64_t wrong = 0;
    while (expected < count) {
        const std::size_t got = expected % 5 == 4 ? ring.skip(3) : ring.read(piece);
        if (expected % 5 != 4)
            for (std::size_t i = 0; i < got; ++i) wrong += piece[i] == expected + i ? 0 : 1;
        if (got == 0) std::this_thread::yield();
        expected += got;
    }
    producer.join();
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(ring.readable(), 0U);
    EXPECT_EQ(ring.writable(), ring.capacity());
}

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
    // The watch itself: what it must see, and that it sees nothing outside the scope.
    EXPECT_EQ(violationOf([] { delete new int(1); }), "allocation");
    if (test::RealtimeWatch::seesLocks()) {
        EXPECT_EQ(violationOf([&] { const std::lock_guard lock(mutex); }), "pthread_mutex_lock");
    }
    EXPECT_EQ(violationOf([] {}), "");

    Ring<float> ring(64);
    TripleBuffer<std::array<float, 16>> levels;
    std::array<float, 512> left{};
    EXPECT_EQ(violationOf([&] {
                  for (int i = 0; i < 200; ++i) {
                      ring.write(left);
                      ring.read(left);
                      levels.publish({});
                      levels.update();
                  }
              }),
              "");
}

TEST(Realtime, playbackLeavesAProcessorToItself) {
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

TEST(Realtime, threadsBearTheirNamesAndPriorities) {
    std::string name;
    bool isBackground = false;
    startThread("orvane-background-reader", ThreadPriority::background, [&](const std::stop_token&) {
        std::array<char, 32> text{};
        pthread_getname_np(pthread_self(), text.data(), text.size());
        name = text.data();
        isBackground = setThisThreadPriority(ThreadPriority::background);
    }).join();
    EXPECT_EQ(name, "orvane-backgrou");
    EXPECT_TRUE(isBackground);
}

} // namespace
} // namespace orvane::platform
