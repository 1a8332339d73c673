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

// Routing of a take without a usable default: each window is decided by itself, then runs of equal decisions
// become blocks.

/// The decision for one window.
struct PerWindowOutcome {
    int activeTrack = 0;               ///< 0: none
    std::optional<int> secondaryTrack; ///< of `multiActiveWarn`
    BlockKind kind = BlockKind::silence;
    std::string reason;

    bool operator==(const PerWindowOutcome&) const = default;
};

struct WindowDecision {
    int windowIndex = 0;
    PerWindowOutcome outcome;

    bool operator==(const WindowDecision&) const = default;
};

/// One track's standing in one window.
struct Score {
    int trackIndex = 0;
    BlockKind kind = BlockKind::lav; ///< `lav` for every track that is neither boom nor mix
    double rmsDB = 0;                ///< dBFS
    double snrDB = 0;                ///< above the track's noise floor; 0 without statistics
    double total = 0;
};

/// A stretch of equal outcomes, in windows; the end is exclusive.
struct Run {
    int startWindow = 0;
    int endWindow = 0;
    PerWindowOutcome outcome;
};

/// The tracks by role. Quick to ask for each channel of each window, however many channels there are.
struct TrackRoles {
    std::vector<int> boomTracks; ///< in the order of the classifications
    std::vector<int> mixTracks;  ///< in the same order
    std::unordered_set<int> lavTracks;
    std::unordered_map<int, BlockKind> kindByTrack; ///< of tracks that are boom or mix
    std::unordered_map<int, std::string> speakerByTrack;

    static TrackRoles of(const std::vector<ChannelClassification>& classifications);
    /// `lav` for every track that is neither boom nor mix.
    BlockKind kindOf(int track) const;
};

/// Decibels of a track above its noise floor; 0 for a track without statistics.
double snrDB(double rmsDB, int track, const TakeStatistics& channelStats);

/// No candidates mean all tracks.
PerWindowOutcome decideOneWindow(const PerWindowFrame& frame, const TrackRoles& roles,
                                 const TakeStatistics& channelStats, const std::set<int>& candidateTracks);

/// One decision a frame, in order.
std::vector<WindowDecision> perWindowDecisions(std::span<const PerWindowFrame> frames,
                                               const TrackRoles& roles, const TakeStatistics& channelStats,
                                               const std::set<int>& candidateTracks);

/// Blocks of equal outcomes, the reason included; a run shorter than `minBlockSeconds` lengthens the block
/// before it. Since the reason of a score holds its numbers, mainly stretches with a fixed reason stand.
std::vector<BlockDecision> consolidateRuns(const std::vector<WindowDecision>& perWindow, double windowSeconds,
                                           double minBlockSeconds);

} // namespace orvane::SmartAudioBlockRouter
