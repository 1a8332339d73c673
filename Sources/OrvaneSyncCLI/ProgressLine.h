#pragma once

#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Models/ScanModels.h"

#include <chrono>
#include <optional>
#include <string>

namespace orvane::cli {

/// One line on a terminal's standard error with the progress of long work: phase, count, bar and remaining
/// time. Without a terminal it prints nothing. Cleared when it is destroyed.
class ProgressLine {
  public:
    ProgressLine(Context& context, bool isQuiet);
    ~ProgressLine() { clear(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const ScanProgress& progress) { show(progress, progress.fraction()); }
    /// For work with steps of different length: `fraction` of it is done, 0 to 1. A fraction that decreases
    /// belongs to new work.
    void show(const ScanProgress& progress, double fraction);
    void clear();

    /// The line for a terminal of that many columns. `elapsed`: seconds since the work began.
    static std::string text(const ScanProgress& progress, double fraction, double elapsed, int columns);

  private:
    Context& context_;
    bool isOn_;
    bool isShown_ = false;
    double lastFraction_ = 0;
    std::optional<std::chrono::nanoseconds> start_;
    std::optional<std::chrono::nanoseconds> lastDrawn_;
};

} // namespace orvane::cli
