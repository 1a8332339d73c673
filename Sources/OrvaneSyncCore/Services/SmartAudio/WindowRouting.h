#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

// Routing of a take without a usable default: each window is decided separately, then runs of equal decisions
// become blocks.

/// The decision for one window.
struct PerWindowOutcome {
    int activeTrack = 0;               ///< 0: none
    std::optional<int> secondaryTrack; ///< only for `multiActiveWarn`
    BlockKind kind = BlockKind::silence;
    std::string reason;

    bool operator==(const PerWindowOutcome&) const = default;
};

struct WindowDecision {
    int windowIndex = 0;
    PerWindowOutcome outcome;

    bool operator==(const WindowDecision&) const = default;
};

/// The rating of one track in one window.
struct Score {
    int trackIndex = 0;
    BlockKind kind = BlockKind::lav; ///< `lav` for every track that is neither boom nor mix
    double rmsDB = 0;                ///< dBFS
    double snrDB = 0;                ///< above the track's noise floor; 0 without statistics
    double total = 0;
};

/// A run of windows with equal outcomes; the end is exclusive.
struct Run {
    int startWindow = 0;
    int endWindow = 0;
    PerWindowOutcome outcome;
};

/// The tracks by role. Fast for each channel of each window, also with many channels.
struct TrackRoles {
    std::vector<int> boomTracks; ///< in the order of the classifications
    std::vector<int> mixTracks;  ///< in the order of the classifications
    std::unordered_set<int> lavTracks;
    std::unordered_map<int, BlockKind> kindByTrack; ///< only of tracks that are boom or mix
    std::unordered_map<int, std::string> speakerByTrack;

    static TrackRoles of(const std::vector<ChannelClassification>& classifications);
    /// `lav` for every track that is neither boom nor mix.
    BlockKind kindOf(int track) const;
};

/// Decibels of a track above its noise floor; 0 for a track without statistics.
double snrDB(double rmsDB, int track, const TakeStatistics& channelStats);

/// No candidates means all tracks.
PerWindowOutcome decideOneWindow(const PerWindowFrame& frame, const TrackRoles& roles,
                                 const TakeStatistics& channelStats, const std::set<int>& candidateTracks);

/// One decision for each frame, in order.
std::vector<WindowDecision> perWindowDecisions(std::span<const PerWindowFrame> frames,
                                               const TrackRoles& roles, const TakeStatistics& channelStats,
                                               const std::set<int>& candidateTracks);

/// Blocks of equal outcomes, including their reasons; a run that is shorter than `minBlockSeconds` lengthens
/// the block before it. As most reasons contain the numbers of a score, mainly runs with a fixed reason
/// become blocks of their own.
std::vector<BlockDecision> consolidateRuns(const std::vector<WindowDecision>& perWindow, double windowSeconds,
                                           double minBlockSeconds);

} // namespace orvane::SmartAudioBlockRouter
