#pragma once

#include "OrvaneSyncCLI/ProgressLine.h"
#include "Platform/MainThread.h"
#include "Platform/Task.h"

#include <exception>
#include <utility>

namespace orvane::cli {

/// Runs the loop until the operation has ended; its exception passes through.
inline void runUntilDone(platform::RunLoop& loop, const platform::Task& operation) {
    std::exception_ptr raised;
    operation.whenDone([&](std::exception_ptr how) {
        raised = std::move(how);
        loop.quit();
    });
    loop.run();
    if (raised) std::rethrow_exception(raised);
}

/// The same; in every case the progress line is cleared at the end.
inline void runUntilDone(platform::RunLoop& loop, const platform::Task& operation, ProgressLine& progress) {
    try {
        runUntilDone(loop, operation);
    } catch (...) {
        progress.clear();
        throw;
    }
    progress.clear();
}

} // namespace orvane::cli
