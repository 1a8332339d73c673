#pragma once

#include "OrvaneSyncCore/Models/IncompleteFile.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

// The records of one analysis of one recording. A track is one channel of the recording, numbered from 1
// through all its files; 0 means no track. Times are seconds from the recording's first sample (take time;
// audio time where the recording is one file).

/// What the classifier decided for one track.
struct ChannelClassification {
    int trackIndex = 0;
    ChannelKind kind = ChannelKind::unknown;
    float confidence = 0;                   ///< 0 to 1
    std::string source;                     ///< why, for people; routing also searches its words
    std::optional<std::string> speakerName; ///< lower case, from the track's name
    bool isPreMixed = false;                ///< the track's name says "mix" or "stereo"

    bool operator==(const ChannelClassification&) const = default;
};

/// One track over a whole take. Not stored.
struct ChannelRouteStats {
    int trackIndex = 0;
    double noiseFloorDB = 0;         ///< 20th percentile of the window levels, dBFS, within -65 to -25
    double typicalCrestFactorDB = 0; ///< median crest of the speech windows, dB
    double takeDominance = 0;        ///< rank by mean level among all tracks: 0 the quietest, 1 the loudest
    double speechCoverage = 0;       ///< share of the windows with speech, 0 to 1
    double rmsVarianceDB = 0;        ///< standard deviation of the window levels, dB

    bool operator==(const ChannelRouteStats&) const = default;
};

/// One routed stretch.
struct BlockDecision {
    double startSeconds = 0;
    double endSeconds = 0;             ///< exclusive
    int activeTrack = 0;               ///< 0: none
    std::optional<int> secondaryTrack; ///< of a `multiActiveWarn` block
    BlockKind kind = BlockKind::silence;
    double gainMultiplier = 1.0; ///< linear
    double peakDB = -120.0;      ///< dBFS; -120 for digital silence
    std::string reason;          ///< why, for people

    bool operator==(const BlockDecision&) const = default;
};

/// What the dialogue and music stems say, per analysis window.
struct StemMetrics {
    std::vector<float> dialogPerWindowRMS;  ///< linear
    std::vector<float> dialogPerWindowPeak; ///< linear
    std::vector<float> musicPerWindowRMS;   ///< linear
    float musicProbability = 0;             ///< mean music RMS over mean RMS of track 1, 0 to 1

    bool operator==(const StemMetrics&) const = default;
};

/// What is recommended and was measured for one track. An absent amount means no such effect.
struct TrackAdjustment {
    int trackIndex = 0;
    std::optional<float> voiceIsolationAmount; ///< 0 to 1
    std::optional<float> loudnessAmount;       ///< 0 to 1
    std::optional<float> loudnessUniformity;   ///< 0 to 1
    std::optional<int> humReductionFrequency;  ///< Hz
    std::optional<float> volumeGainDB;         ///< within -12 to +12
    float speechRatio = 0;                     ///< share of windows with speech
    float estimatedSNR = 0;                    ///< dB
    float averageLevelDB = 0;                  ///< dBFS of the mean window RMS
    float bestSourceScore = 0;                 ///< 0 to 1; the highest is the clip's best track

    /// The uniformity alone is none: it only shapes the loudness effect.
    bool hasAdjustment() const {
        return voiceIsolationAmount || loudnessAmount || humReductionFrequency || volumeGainDB;
    }
    bool operator==(const TrackAdjustment&) const = default;
};

/// A stretch on which one track is best.
struct WindowedBestSegment {
    double startSeconds = 0;
    double endSeconds = 0;
    int bestTrackIndex = 0;

    bool operator==(const WindowedBestSegment&) const = default;
};

// Every analysis measures in windows of this length.
inline constexpr double smartAudioWindowSeconds = 0.25;

/// The result on one recording. Lives in memory only; what the editor chose survives in the SyncGroup.
struct SmartAudioResult {
    std::vector<TrackAdjustment> tracks; ///< one per analysed track, in track order
    std::optional<int> bestTrackIndex;   ///< absent without tracks
    std::vector<WindowedBestSegment> windowedBestTracks;
    double windowDurationSeconds = smartAudioWindowSeconds;
    std::vector<BlockDecision> blocks; ///< this and the next two: only where block routing was asked for
    std::vector<ChannelClassification> channelClassifications; ///< in track order
    std::optional<MaterialCharacter> detectedCharacter;
    std::optional<StemMetrics> stemMetrics; ///< only where stems were given
    double heardSeconds = 0;                ///< of the recording, from its beginning
    double promisedSeconds = 0;             ///< the length of the recording by its header
    /// Of a recording in several files: those that are not all there, in whose place there was silence.
    std::vector<IncompleteFile> incompleteFiles;

    bool hasAdjustments() const;
    /// Decoding gave at least one window.
    bool isHeard() const { return !blocks.empty() || !windowedBestTracks.empty(); }
    bool operator==(const SmartAudioResult&) const = default;
};

JSON toJSON(const ChannelClassification& classification);
JSON toJSON(const BlockDecision& block);
JSON toJSON(const StemMetrics& metrics);
JSON toJSON(const TrackAdjustment& adjustment);
JSON toJSON(const WindowedBestSegment& segment);
JSON toJSON(const SmartAudioResult& result);
template <>
ChannelClassification fromJSON<ChannelClassification>(const JSON& json);
template <>
BlockDecision fromJSON<BlockDecision>(const JSON& json);

} // namespace orvane
