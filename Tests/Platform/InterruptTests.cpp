#include "Platform/Interrupt.h"
#include "Platform/NewFile.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace orvane::platform {
namespace {

/// Writes more than the pipe can hold; the process is asked to end when the write has begun.
[[noreturn]] void saveWhereNobodyReads(const std::string& pipe) {
    exitOnInterrupt("");
    beforeTermination([](const EndProcess&) {}, std::chrono::milliseconds(20));
    pollfd reader{::open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC), POLLIN, 0};
    std::thread([&reader] {
        ::poll(&reader, 1, -1);
        ::kill(::getpid(), SIGTERM);
    }).detach();
    NewFile(pipe).append(std::string(std::size_t{1} << 20U, 'x'));
    ::_exit(0);
}

TEST(Interrupt, endsThoughWhatIsSavedDoesNotGetOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const test::TemporaryDirectory folder;
    const std::string pipe = folder.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THROW(NewFile{pipe}, FileError) << "nobody reads it, and nobody is waited for";
    EXPECT_EXIT(saveWhereNobodyReads(pipe), testing::ExitedWithCode(1), "error: can't save .*/pipe: ");
}

[[noreturn]] void interrupt() {
    exitOnInterrupt("");
    ::kill(::getpid(), SIGINT);
    for (;;) ::pause();
}

TEST(Interrupt, endsByTheKeyboardWithALine) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(interrupt(), testing::ExitedWithCode(130), "^interrupted\n$");
}

TEST(Interrupt, knowsAPipeWithoutAReader) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    EXPECT_FALSE(statusWithoutReader(ends[1]));
    ::close(ends[0]);
    EXPECT_EQ(statusWithoutReader(ends[1]), 141);
    ::close(ends[1]);
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    EXPECT_FALSE(statusWithoutReader(full)) << "a disk that refuses is an error";
    ::close(full);
}

} // namespace
} // namespace orvane::platform
