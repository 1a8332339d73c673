#pragma once

#include "Timecode/TimecodeFrameRate.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// A point in time as hours, minutes, seconds and frames at a frame rate. No component is checked, clamped or
/// wrapped: the 25th hour is carried as 1 day and 1 hour, and 99 frames stay 99 frames. A frame has 100
/// subframes, which are calculated and never printed. All drop-frame arithmetic of the system is here.
class Timecode {
  public:
    struct Components {
        std::int64_t days = 0, hours = 0, minutes = 0, seconds = 0, frames = 0, subFrames = 0;
        bool operator==(const Components&) const = default;
    };
    static constexpr int subFramesPerFrame = 100;
    /// A part of a frame. It prevents a value that should be exactly on a frame from being truncated to the
    /// frame before.
    static constexpr double elapsedNudge = 0.00001;
    /// Frame counts of this size and beyond give zero: with the dropped numbers added they would overflow 64
    /// bits.
    static constexpr double frameCountLimit = 4.0e18;

    Timecode(Components components, TimecodeFrameRate frameRate)
        : components_(components), frameRate_(frameRate) {}

    /// From seconds of real time. Values that are not finite, or beyond 64 bits of frames, give zero.
    static Timecode fromRealTime(double seconds, TimecodeFrameRate rate);
    static Timecode fromFrameCount(std::int64_t frames, TimecodeFrameRate rate);
    /// HH:MM:SS:FF with optional days before and subframes after; ":" and ";" are interchangeable, and only
    /// the rate decides about drop frame. Nothing when the text is malformed.
    static std::optional<Timecode> fromString(std::string_view text, TimecodeFrameRate rate);

    const Components& components() const { return components_; }
    TimecodeFrameRate frameRate() const { return frameRate_; }

    /// HH:MM:SS:FF, with ";" before the frames at a drop-frame rate, and with the days before if there are
    /// any.
    std::string stringValue() const;
    /// Seconds of real time.
    double realTimeValue() const;

    bool operator==(const Timecode&) const = default;

  private:
    Components components_;
    TimecodeFrameRate frameRate_;
};

} // namespace orvane
