#include "Platform/ReadErrorWatch.h"

#include <atomic>
#include <cerrno>

namespace orvane::platform {

namespace {
thread_local ReadErrorWatch* innermost = nullptr;
std::atomic<std::uint64_t> errors = 0;
} // namespace

ReadErrorWatch::ReadErrorWatch() : outer_(innermost) { innermost = this; }

ReadErrorWatch::~ReadErrorWatch() { innermost = outer_; }

std::uint64_t ReadErrorWatch::errorsOfAllThreads() noexcept { return errors; }

void ReadErrorWatch::report() noexcept {
    ++errors;
    for (ReadErrorWatch* watch = innermost; watch != nullptr; watch = watch->outer_)
        watch->hasSeenError_ = true;
}

void ReadErrorWatch::reportUnlessAbsent(int errorNumber) noexcept {
    if (errorNumber != ENOENT && errorNumber != ENOTDIR) report();
}

} // namespace orvane::platform
