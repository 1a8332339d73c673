#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// What the inspector shows about a clip's sync. Pure functions of the clip; interface thread.

struct SyncPart {
    /// The texts that `lock` and `updateAnchor` can have.
    static constexpr std::array<std::string_view, 4> lockTexts{"Lock", "Unlock", "Lock at This Offset",
                                                               "Lock as without sound"};
    static constexpr std::array<std::string_view, 2> anchorTexts{"Set Clap Point", "Update Clap Point"};

    SyncMethod method = SyncMethod::timecode;
    bool hasSound = false;
    bool isLocked = false;
    bool isApproved = false;
    double frameRate = 24;    ///< the frames per second in which offsets are counted
    double offsetSeconds = 0; ///< set by the editor, added to the offset of the match
    std::string offsetFrames; ///< whole frames, such as "+3"
    std::string offsetShown;  ///< with a decimal if it is not a whole number of frames, such as "-2.9"
    std::string offsetInSeconds;
    std::string wholeFrames; ///< the offset that the document gets if this one is not a whole number of
                             ///< frames; else empty
    std::string begins; ///< where the sound begins, relative to the picture; how many recordings there are
    std::string anchor; ///< where the anchor is; without one, what to do
    bool hasAnchor = false;
    // Why each button does nothing; empty if it works, as far as this depends on the clip.
    std::string whyNoGoTo, whyNoPut, whyNoUpdate, whyNoClear, whyNoSearch, whyNoCheck;
    std::string anchorHint;
    std::string updateAnchor; ///< the text of the button for the anchor
    std::string lock;         ///< the text of the button for the lock

    /// `frameRate`: frames per second of the clip's times (TimelineController::timelineFrameRate).
    static SyncPart of(const SyncGroup& group, double frameRate);
    /// `lock` of the clip.
    static std::string lockOf(const SyncGroup& group);
    bool operator==(const SyncPart&) const = default;
};

/// The frame rate of the sensor, and what is exported in addition for an off-speed clip.
struct SensorPart {
    static constexpr std::array<double, 8> offered{24, 25, 30, 48, 50, 60, 96, 120};
    static constexpr std::string_view hint = "Override the camera's sensor FPS for this clip. Use when the "
                                             "file is conformed to project rate but was "
                                             "actually shot slow-mo at a higher sensor rate.";
    static constexpr std::string_view unconfirmedNote =
        "No project-rate signal (tmcd atom / vendor metadata) was found, so slow-motion could not be "
        "auto-detected. If this clip was shot slow-mo, set its real sensor FPS above; otherwise leave it — "
        "sync "
        "treats it as normal speed.";

    std::vector<double> rates;  ///< ascending: the offered rates and the clip's own
    std::optional<double> rate; ///< the clip's; absent if unknown
    std::string reset;          ///< "Reset to detected (25)"
    std::string speed;          ///< the speed that results from the rates; empty without them
    bool isUnconfirmed = false;
    bool isLocked = false;
    bool isOffspeed = false;
    bool generatesNative = false;
    bool generatesProjectRate = false;

    static SensorPart of(const SyncGroup& group);
    bool operator==(const SensorPart&) const = default;
};

/// A rate as text, such as "25" or "47.952".
std::string fpsText(double rate);

} // namespace orvane
