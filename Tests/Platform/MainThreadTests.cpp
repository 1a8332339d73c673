#include "Platform/MainThread.h"
#include "Support/Test.h"

#include <atomic>
#include <thread>

namespace orvane::platform {
namespace {

using namespace std::chrono_literals;

TEST(RunLoop, servesInOrderUntilQuit) {
    const auto loop = RunLoop::create();
    std::string order;
    const auto calledOff = loop->after(0ms, [&] { order += "x"; });
    calledOff->cancel();
    std::thread other([&] { EXPECT_FALSE(loop->isCurrent()); });
    other.join();
    loop->post([&] {
        order += "a";
        loop->post([&] {
            order += "c";
            loop->after(1ms, [&] {
                order += "d";
                loop->quit();
            });
        });
    });
    loop->post([&] { order += "b"; });
    loop->run();
    EXPECT_EQ(order, "abcd");

    loop->post([&] { loop->quit(); });
    loop->post([&] { order += "later"; });
    loop->run();
    EXPECT_EQ(order, "abcd");
}

TEST(RunLoop, takesWorkFromManyThreads) {
    const auto loop = RunLoop::create();
    int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 250; ++i)
                loop->post([&] {
                    EXPECT_TRUE(loop->isCurrent());
                    if (++count == 1000) loop->quit();
                });
        });
    loop->run();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(count, 1000);
}

TEST(SerialQueue, runsAllPostedWork) {
    std::string order;
    {
        const auto queue = SerialQueue::create("a label longer than the kernel takes");
        queue->after(2h, [&] { order += "e"; });
        queue->after(1h, [&] { order += "d"; });
        for (const char c : {'a', 'b'}) queue->post([&order, c] { order += c; });
        queue->sync([&] { order += "c"; });
        EXPECT_EQ(order, "abc");
        EXPECT_THROW(queue->sync([] { throw std::runtime_error("passes through"); }), std::runtime_error);
    }
    EXPECT_EQ(order, "abcde");
}

TEST(SerialQueue, runsOnePieceAtATimeForManyCallers) {
    constexpr int callers = 4, rounds = 250;
    int count = 0; // used only on the queue
    std::vector<std::thread> threads;
    {
        const auto queue = SerialQueue::create("many");
        for (int caller = 0; caller < callers; ++caller)
            threads.emplace_back([&] {
                for (int round = 0; round < rounds; ++round) {
                    bool isPostedDone = false, wasPostedDone = false;
                    queue->post([&] { isPostedDone = ++count > 0; });
                    queue->sync([&] { wasPostedDone = isPostedDone && ++count > 0; });
                    EXPECT_TRUE(wasPostedDone);
                }
            });
        for (auto& thread : threads) thread.join();
    }
    EXPECT_EQ(count, 2 * callers * rounds);
}

TEST(Concurrently, runsEachIndexOnceWithinItsLimit) {
    for (const std::size_t concurrency : {0U, 1U, 3U, 1000U}) {
        std::vector<std::atomic<int>> runs(500);
        std::atomic<std::size_t> now = 0, most = 0;
        concurrently(runs.size(), concurrency, [&](std::size_t i) {
            const std::size_t running = ++now;
            for (std::size_t seen = most; running > seen && !most.compare_exchange_weak(seen, running);) {
            }
            ++runs[i];
            --now;
        });
        EXPECT_TRUE(std::ranges::all_of(runs, [](const auto& count) { return count == 1; }));
        EXPECT_LE(most, std::max<std::size_t>(concurrency, 1));
    }
    concurrently(0, 4, [](std::size_t) { ADD_FAILURE(); });
}

TEST(Concurrently, nestsAndPassesExceptionsOn) {
    std::atomic<int> count = 0;
    concurrently(64, 64, [&](std::size_t) { concurrently(8, 8, [&](std::size_t) { ++count; }); });
    EXPECT_EQ(count, 512);
    EXPECT_THROW(concurrently(100, 4,
                              [](std::size_t i) {
                                  if (i == 7) throw std::runtime_error("seven");
                              }),
                 std::runtime_error);
}

} // namespace
} // namespace orvane::platform
