#include "Platform/OnQueue.h"
#include "Platform/Stop.h"
#include "Platform/Task.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <semaphore>
#include <stop_token>
#include <string>
#include <thread>

namespace orvane::platform {
namespace {

using test::VirtualMainThread;

std::string endOf(const Task& task) {
    // A task that still runs calls back later.
    const auto end = std::make_shared<std::string>("runs");
    task.whenDone([end](const std::exception_ptr& raised) {
        *end = "done";
        try {
            if (raised) std::rethrow_exception(raised);
        } catch (const Stopped& stopped) {
            *end = stopped.what();
        }
    });
    return *end;
}

struct StoppingTasks : ::testing::Test {
    std::shared_ptr<VirtualMainThread> main = std::make_shared<VirtualMainThread>();
    std::unique_ptr<SerialQueue> queue = SerialQueue::create("stopped");
    std::string order;

    Task waitFor(Task child) {
        co_await child;
        order += "never";
    }
};

/// Work that checks its token ends, then the task that waits for it, then the task that waits for that one.
TEST_F(StoppingTasks, reachesTheWorkThroughTheTasksThatWait) {
    std::binary_semaphore isUnderWay{0};
    std::atomic<bool> hasNoticed = false;
    const auto listen = [&]() -> Task {
        auto listening = onQueue(*queue, main, [&](const std::stop_token& stop) {
            isUnderWay.release();
            while (!stop.stop_requested()) std::this_thread::yield();
            hasNoticed = true;
            throwIfStopped(stop);
        });
        co_await listening;
        order += "never";
    };
    const Task child = listen();
    const Task parent = waitFor(child);
    isUnderWay.acquire();
    parent.requestStop();
    EXPECT_EQ(endOf(child), "runs") << "nothing goes on within the request";
    main->runPosted();
    EXPECT_EQ(endOf(child), "cancelled");
    EXPECT_EQ(endOf(parent), "cancelled");
    queue.reset();
    EXPECT_TRUE(hasNoticed);
    EXPECT_EQ(order, "");
}

/// A system call that hangs delays neither the operation nor its queue nor the end of both. All work of a
/// queue uses one thread, but a thread with hanging work is not used again.
TEST_F(StoppingTasks, leavesWorkThatHangs) {
    const auto threadOfNext = [&] {
        std::thread::id thread;
        const auto noting = [&]() -> Task {
            auto piece =
                onQueue(*queue, main, [&](const std::stop_token&) { thread = std::this_thread::get_id(); });
            co_await piece;
        };
        const Task task = noting();
        EXPECT_TRUE(main->waitUntil([&] { return task.isDone(); }));
        return thread;
    };
    const std::thread::id before = threadOfNext();
    EXPECT_EQ(threadOfNext(), before);
    const auto share = std::make_shared<std::binary_semaphore>(0);
    const std::weak_ptr<std::binary_semaphore> kept = share;
    std::binary_semaphore isUnderWay{0};
    const auto read = [&](std::shared_ptr<std::binary_semaphore> file) -> Task {
        auto reading =
            onQueue(*queue, main, [file = std::move(file), &isUnderWay](const std::stop_token& /*stop*/) {
                isUnderWay.release();
                file->acquire();
            });
        co_await reading;
    };
    const Task hanging = read(share);
    isUnderWay.acquire();
    hanging.requestStop();
    main->runPosted();
    EXPECT_EQ(endOf(hanging), "cancelled");
    queue->sync([&] { order += "next"; });
    EXPECT_EQ(order, "next");
    EXPECT_NE(threadOfNext(), before);
    queue.reset();
    EXPECT_TRUE(SerialQueue::hasAbandonedWork());
    share->release();
    while (SerialQueue::hasAbandonedWork()) std::this_thread::yield();
    EXPECT_EQ(kept.use_count(), 1) << "what the work held is given back when it ends";
}

/// Drops a piece of work when its stop is requested, before any other callback of that stop.
class DroppingQueue final : public SerialQueue {
  public:
    void post(std::function<void()> work, std::stop_token stop) override {
        work_ = std::move(work);
        dropping_.emplace(std::move(stop), [this] { work_ = nullptr; }); // the latest is called first
    }
    void sync(const std::function<void()>& work) override { work(); }
    void after(std::chrono::nanoseconds, std::function<void()> work) override { work_ = std::move(work); }
    bool isEmpty() const { return !work_; }

  private:
    std::function<void()> work_;
    std::optional<std::stop_callback<std::function<void()>>> dropping_;
};

TEST_F(StoppingTasks, endsWhenAQueueDropsItsWork) {
    DroppingQueue dropping;
    const auto read = [&]() -> Task {
        auto reading = onQueue(dropping, main, [](const std::stop_token&) {});
        co_await reading;
    };
    const Task task = read();
    ASSERT_FALSE(dropping.isEmpty());
    task.requestStop();
    EXPECT_TRUE(dropping.isEmpty());
    main->runPosted();
    EXPECT_EQ(endOf(task), "cancelled");
}

/// Work that takes no token, such as writing a file, is completed; the stop comes after it.
TEST_F(StoppingTasks, completesWorkWithoutAToken) {
    bool isBegun = false;
    const auto save = [&]() -> Task {
        auto writing = onQueue(*queue, main, [&] { order += "written "; });
        co_await writing;
        order += "back ";
        auto next = onQueue(*queue, main, [&](const std::stop_token&) { isBegun = true; });
        co_await next;
    };
    const Task task = save();
    task.requestStop();
    EXPECT_TRUE(main->waitUntil([&] { return task.isDone(); }));
    EXPECT_EQ(order, "written back ");
    EXPECT_EQ(endOf(task), "cancelled");
    EXPECT_FALSE(isBegun);
}

TEST(Concurrently, beginsNothingMoreOnceStopped) {
    for (const std::size_t threads : {1, 4}) {
        std::stop_source stop;
        std::atomic<int> begun = 0;
        const auto work = [&](std::size_t) {
            if (++begun == 5) stop.request_stop();
        };
        EXPECT_THROW(concurrently(100'000, threads, work, stop.get_token()), Stopped);
        EXPECT_LT(begun, 100);
    }
}

TEST(Concurrently, callsWithinCallsMakeNoMoreThreadsThanThePoolHas) {
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
    };
    const auto before = threads();
    std::atomic<int> done = 0;
    concurrently(64, 64, [&](std::size_t) { concurrently(64, 64, [&](std::size_t) { ++done; }); });
    EXPECT_EQ(done, 64 * 64);
    EXPECT_LE(threads() - before, 4 * std::max(std::thread::hardware_concurrency(), 1U));
}

} // namespace
} // namespace orvane::platform
