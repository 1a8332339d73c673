#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

// What the inspector says of a clip's sync. Pure functions of the clip; interface thread.

struct SyncPart {
    SyncMethod method = SyncMethod::timecode;
    bool hasSound = false;
    bool isLocked = false;
    bool isApproved = false;
    double frameRate = 24;    ///< by which offsets are counted
    double offsetSeconds = 0; ///< the editor's, on top of the matcher's
    std::string offsetFrames; ///< whole ones, such as "+3"
    std::string offsetShown;  ///< with a decimal where it is none of whole frames, such as "-2.9"
    std::string offsetInSeconds;
    std::string
        wholeFrames;    ///< what the document takes of an offset that is none of whole frames; else empty
    std::string begins; ///< where the sound begins, seen from the picture
    std::string anchor; ///< where the anchor is; what to do where there is none
    bool hasAnchor = false;
    // Why a button does nothing; empty where it acts, as far as the clip says it.
    std::string noGoTo, noPut, noUpdate, noClear, noSearch, noCheck;
    std::string anchorHint;
    std::string updateAnchor; ///< what the button for the anchor says
    std::string lock;         ///< what the button for the lock says
    std::string lockedAt;     ///< the offset that was locked, where it is another by now; else empty

    /// `frameRate`: of the clip's times (TimelineController::timelineFrameRate).
    static SyncPart of(const SyncGroup& group, double frameRate);
    bool operator==(const SyncPart&) const = default;
};

/// The rate at which the sensor ran, and what is exported beside an off-speed clip.
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

    std::vector<double> rates;  ///< ascending: the offered ones, and the clip's own
    std::optional<double> rate; ///< the clip's; absent where nothing says it
    std::string reset;          ///< "Reset to detected (25)"
    std::string speed;          ///< what the rates come to; empty without them
    bool isUnconfirmed = false;
    bool isLocked = false;
    bool isOffspeed = false;
    bool generatesNative = false;
    bool generatesProjectRate = false;

    static SensorPart of(const SyncGroup& group);
    bool operator==(const SensorPart&) const = default;
};

/// Such as "25" or "47.952".
std::string fpsText(double rate);

} // namespace orvane
