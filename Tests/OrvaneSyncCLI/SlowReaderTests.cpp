#include "OrvaneSyncCLI/LineWriter.h"
#include "OrvaneSyncCLI/PendingMessageLimit.h"
#include "OrvaneSyncCLI/RunCommand.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <fstream>
#include <memory>
#include <optional>
#include <semaphore>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace orvane::test {
namespace {

/// Accepts no output until the test permits it.
class StuckBuffer : public std::stringbuf {
  public:
    std::binary_semaphore isLet{0};

  protected:
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        isLet.acquire();
        isLet.release();
        return std::stringbuf::xsputn(text, count);
    }
};

TEST(LineWriter, neverHoldsUpWhoWritesAndKeepsTheOrder) {
    StuckBuffer stuck;
    std::ostream out(&stuck);
    bool wasWritten = false;
    {
        cli::LineWriter lines(out);
        lines.write("first");
        lines.write(std::string(cli::LineWriter::fullBytes - std::size("first\n"), 'x'));
        EXPECT_TRUE(lines.isFull());
        std::binary_semaphore hasRoom{0};
        lines.whenWritable([&] { hasRoom.release(); });
        lines.whenWritten([&] { wasWritten = true; });
        EXPECT_FALSE(hasRoom.try_acquire());
        stuck.isLet.release();
        hasRoom.acquire();
        EXPECT_FALSE(lines.isFull());
        lines.write("last");
    }
    EXPECT_TRUE(wasWritten);
    const std::string text = stuck.str();
    EXPECT_TRUE(text.starts_with("first\nxxx") && text.ends_with("xxx\nlast\n"));
}

TEST(PendingMessageLimit, holdsSoManyBytesAndMessagesTogether) {
    constexpr std::size_t megabyte = std::size_t{1} << 20U;
    cli::PendingMessageLimit limit;
    EXPECT_TRUE(limit.tryAcquire(100 * megabyte)) << "one alone is served, whatever it takes";
    EXPECT_FALSE(limit.tryAcquire(0));
    limit.release(100 * megabyte);
    EXPECT_TRUE(limit.tryAcquire(40 * megabyte) && limit.tryAcquire(24 * megabyte));
    EXPECT_FALSE(limit.tryAcquire(1));
    std::thread waiting([&] { limit.acquire(60 * megabyte); });
    limit.release(24 * megabyte);
    limit.release(40 * megabyte);
    waiting.join();
    EXPECT_FALSE(limit.tryAcquire(5 * megabyte)) << "the one that waited has it";
    limit.release(60 * megabyte);
    for (std::size_t i = 0; i < 256; ++i) EXPECT_TRUE(limit.tryAcquire(1));
    EXPECT_FALSE(limit.tryAcquire(1));
}

/// A settings store whose writes end when the test says so.
class HeldStore : public platform::SettingsStore {
  public:
    std::binary_semaphore isHeld{0};
    void letGo() { endWrite(*held_, nullptr); }

  protected:
    void persist(Changes /*changes*/, const platform::SettingsWrite& write) override {
        held_ = write;
        isHeld.release();
    }

  private:
    std::optional<platform::SettingsWrite> held_;
};

/// Gives one request at each read, and counts the requests and the thread that read them.
class CountedRequests : public std::streambuf {
  public:
    explicit CountedRequests(int count) : count_(count) {}
    std::atomic<int> taken = 0;
    std::atomic<pid_t> reader = 0;

  protected:
    int_type underflow() override {
        reader = ::gettid();
        if (taken == count_) return traits_type::eof();
        line_ =
            taken == 0
                ? R"({"jsonrpc":"2.0","id":1,"method":"setSetting","params":{"key":"eventName","value":"x"}})"
                : R"({"jsonrpc":"2.0","id":1,"method":"undoState"})";
        line_ += "\n";
        ++taken;
        setg(line_.data(), line_.data(), line_.data() + line_.size());
        return traits_type::to_int_type(line_.front());
    }

  private:
    const int count_;
    std::string line_;
};

/// The state of a thread from the system: 'R' running, 'S' waiting; another letter once it has ended.
char stateOf(pid_t thread) {
    std::ifstream stat("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string text;
    std::getline(stat, text);
    const std::size_t end = text.rfind(") ");
    return end == std::string::npos ? 'X' : text[end + 2];
}

TEST(Serve, leavesInThePipeWhatHasNoRoomBehindARequestThatWaits) {
    constexpr int most = cli::PendingMessageLimit::mostMessages, count = most + 50;
    const TemporaryDirectory folder;
    const ScopedEnvironment data("XDG_DATA_HOME", folder.path().c_str());
    CountedRequests requests(count);
    std::istream in(&requests);
    std::ostringstream out, err;
    cli::Context context{out, err, in};
    const auto store = std::make_shared<HeldStore>();
    context.settings = store;
    std::thread serving([&] {
        EXPECT_EQ(cli::run(std::vector<std::string>{"serve", "--no-cache"}, context), 0);
    });
    store->isHeld.acquire();
    while (requests.taken <= most || stateOf(requests.reader) == 'R') ::sched_yield();
    EXPECT_EQ(requests.taken, most + 1) << "the last one waits for room";
    EXPECT_EQ(out.str(), "");
    store->letGo();
    serving.join();
    EXPECT_EQ(std::ranges::count(out.str(), '\n'), count) << err.str();
}

/// A client with a full pipe that no longer reads, and then requests the end.
TEST(Serve, endsWhenItIsAskedToThoughNobodyReadsItsAnswers) {
    const TemporaryDirectory folder;
    std::string requests;
    for (int i = 0; i < 400; ++i) requests += "{\"jsonrpc\":\"2.0\",\"id\":1,\"method\":\"commands\"}\n";
    const std::string input = folder.write("in", requests);
    std::array<int, 2> out{};
    ASSERT_EQ(::pipe2(out.data(), O_CLOEXEC), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        for (const char* home : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
            ::setenv(home, folder.path("home").c_str(), 1);
        ::dup2(::open(input.c_str(), O_RDONLY), STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::execl(ORVANESYNC_PROGRAM, ORVANESYNC_PROGRAM, "serve", nullptr);
        ::_exit(127);
    }
    const int ending = static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
    pollfd ended{ending, POLLIN, 0}, room{out[1], POLLOUT, 0};
    while (::poll(&room, 1, 0) == 1 && ::poll(&ended, 1, 0) == 0) ::sched_yield();
    ::kill(process, SIGTERM);
    constexpr int timeLimit = 30'000; // milliseconds
    EXPECT_EQ(::poll(&ended, 1, timeLimit), 1) << "it is still there";
    ::kill(process, SIGKILL);
    int status = 0;
    ::waitpid(process, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 128 + SIGTERM);
    for (const int descriptor : {out[0], out[1], ending}) ::close(descriptor);
}

} // namespace
} // namespace orvane::test
