#include "Support/InterfaceWatching.h"

#include "Platform/InterfaceThread.h"

#include <gtest/gtest.h>

#include <chrono>

namespace orvane::test {

namespace {

/// Unoptimised code and sanitizers are many times slower than a release, and a program's first dialog also
/// reads fonts and styles.
#if defined(ORVANE_SANITIZED)
constexpr int slowdown = 60;
#elif defined(NDEBUG)
constexpr int slowdown = 1;
#else
constexpr int slowdown = 20;
#endif

void hasBlocked(const char* what, const char* work) {
    ADD_FAILURE() << "the interface thread is held up by " << what << " in " << work;
}

void hasRun(const char* work, std::chrono::nanoseconds used) {
    EXPECT_LE(used, slowdown * platform::longestInterfaceWork) << "processor time in " << work;
}

} // namespace

bool watchInterfaceThreads() {
    platform::watchInterfaceWork({hasBlocked, hasRun});
    return true;
}

std::vector<std::string> whatHoldsUp(const std::function<void()>& work) {
    static std::vector<std::string> heard;
    heard.clear();
    platform::watchInterfaceWork(
        {[](const char* what, const char*) { heard.emplace_back(what); }, [](const char*, auto) {}});
    platform::runAsInterfaceWork(work);
    watchInterfaceThreads();
    return heard;
}

} // namespace orvane::test
