#include "OrvaneSyncCLI/ProgressLine.h"

#include "OrvaneSyncCLI/Table.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>

namespace orvane::cli {

namespace {

constexpr std::chrono::nanoseconds redrawInterval = std::chrono::milliseconds(50);
constexpr int widestBar = 30;
constexpr int narrowestBar = 5;
/// Before this an estimate of the remaining time would vary too much.
constexpr double secondsBeforeGuessing = 1.0;

std::string bar(double fraction, int columns) {
    const int full = static_cast<int>(std::lround(fraction * columns));
    std::string text = "[";
    for (int i = 0; i < columns; ++i) text += i < full ? '#' : '.';
    return text + "]";
}

} // namespace

ProgressLine::ProgressLine(Context& context, bool isQuiet)
    : context_(context), isOn_(context.errIsTerminal && !isQuiet) {}

std::string ProgressLine::text(const ScanProgress& progress, double fraction, double elapsed, int columns) {
    if (progress.phase.empty()) return "";
    std::string phase = platform::text::printable(progress.phase); // may name a file
    if (!progress.isActive()) return phase;
    fraction = std::clamp(fraction, 0.0, 1.0);
    const std::string count = " " + std::to_string(progress.current) + "/" + std::to_string(progress.total);
    std::string left;
    if (elapsed > secondsBeforeGuessing && fraction > 0)
        left = " " + clockText(elapsed * (1 - fraction) / fraction) + " left";
    // A wrapped line could not be overwritten.
    phase = fitted(phase, columns - platform::text::displayWidth(count + left));
    const int used = platform::text::displayWidth(phase + count + left) + 4;
    const int room = std::min(columns - used, widestBar);
    return phase + count + (room >= narrowestBar ? " " + bar(fraction, room) : "") + left;
}

void ProgressLine::show(const ScanProgress& progress, double fraction) {
    if (!isOn_) return;
    const auto now = context_.clock->now();
    if (!start_ || fraction < lastFraction_) start_ = now;
    lastFraction_ = fraction;
    const bool isEnd = fraction >= 1;
    if (lastDrawn_ && now - *lastDrawn_ < redrawInterval && !isEnd) return;
    lastDrawn_ = now;
    const std::string line =
        text(progress, fraction, std::chrono::duration<double>(now - *start_).count(), context_.errWidth);
    context_.err << "\r\x1b[K" << line << std::flush;
    isShown_ = !line.empty();
}

void ProgressLine::clear() {
    if (!isShown_) return;
    context_.err << "\r\x1b[K" << std::flush;
    isShown_ = false;
}

} // namespace orvane::cli
