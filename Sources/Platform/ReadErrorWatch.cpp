#include "Platform/ReadErrorWatch.h"

#include <cerrno>

namespace orvane::platform {

namespace {
thread_local ReadErrorWatch* innermost = nullptr;
}

ReadErrorWatch::ReadErrorWatch() : outer_(innermost) { innermost = this; }

ReadErrorWatch::~ReadErrorWatch() { innermost = outer_; }

void ReadErrorWatch::report() noexcept {
    for (ReadErrorWatch* watch = innermost; watch != nullptr; watch = watch->outer_)
        watch->hasSeenError_ = true;
}

void ReadErrorWatch::reportUnlessAbsent(int errorNumber) noexcept {
    if (errorNumber != ENOENT && errorNumber != ENOTDIR) report();
}

} // namespace orvane::platform
