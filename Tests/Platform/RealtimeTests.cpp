#include "Platform/MainThread.h"
#include "Platform/Realtime/ReadAheadAudio.h"
#include "Platform/Realtime/RealtimeScope.h"
#include "Platform/Realtime/Ring.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Realtime/TripleBuffer.h"
#include "Support/MemoryAudio.h"
#include "Support/RealtimeWatch.h"

#include <gtest/gtest.h>

#include <array>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

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

/// Two channels; the sample of frame n is n and -n.
std::unique_ptr<AudioFile> countingFile(std::size_t frames) {
    std::vector<std::vector<float>> channels(2, std::vector<float>(frames));
    for (std::size_t n = 0; n < frames; ++n) {
        channels[0][n] = static_cast<float>(n);
        channels[1][n] = -static_cast<float>(n);
    }
    return std::make_unique<test::MemoryAudio>(std::move(channels), 48000);
}

/// Reads to the end or `most` frames, waiting for the reading thread; the number of frames that are not what
/// the file holds at that place.
std::size_t wrongFrames(ReadAheadAudio& audio, std::size_t most, std::size_t& got) {
    std::array<float, 331> left{};
    std::array<float, 331> right{};
    std::array<float*, 2> arrays{left.data(), right.data()};
    std::size_t wrong = 0;
    for (got = 0; got < most;) {
        const auto from = static_cast<std::size_t>(audio.position());
        const std::size_t frames = audio.read(arrays, std::min(left.size(), most - got));
        for (std::size_t i = 0; i < frames; ++i) {
            const auto expected = static_cast<float>(from + i);
            wrong += left[i] == expected && right[i] == -expected ? 0 : 1;
        }
        got += frames;
        if (frames > 0) continue;
        if (audio.isAtEnd()) break;
        audio.waitUntilReady();
    }
    return wrong;
}

TEST(Realtime, readAheadGivesTheFileFromAnyPosition) {
    constexpr std::size_t length = 20000;
    ReadAheadAudio audio(countingFile(length), 5000);
    std::size_t got = 0;
    EXPECT_EQ(wrongFrames(audio, length * 2, got), 0U);
    EXPECT_EQ(got, length);
    struct Case {
        std::int64_t to;
        std::size_t most, expected;
    };
    // Back and forth, within what was read ahead, at block boundaries, at and behind the end, and several
    // requests before the first is answered.
    for (const Case& test : {Case{0, 100, 100}, Case{1024, 3000, 3000}, Case{19999, 50, 1},
                             Case{20000, 50, 0}, Case{30000, 50, 0}, Case{4095, length, length - 4095}}) {
        audio.seek(7);
        audio.seek(length / 2);
        audio.seek(test.to);
        EXPECT_EQ(wrongFrames(audio, test.most, got), 0U) << test.to;
        EXPECT_EQ(got, test.expected) << test.to;
    }
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

    ReadAheadAudio audio(countingFile(20000), 5000);
    audio.waitUntilReady();
    Ring<float> ring(64);
    TripleBuffer<std::array<float, 16>> levels;
    std::array<float, 512> left{};
    std::array<float*, 1> arrays{left.data()};
    EXPECT_EQ(violationOf([&] {
                  for (int i = 0; i < 200; ++i) {
                      audio.read(arrays, left.size());
                      if (i % 20 == 0) audio.seek(i * 50);
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
