#pragma once

#include "OrvaneSyncCore/Models/IncompleteFile.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

// The records of one analysis of one recording. A track is one channel of the recording, numbered from 1
// through all its files; 0 means no track. Times are seconds from the recording's first sample (take time,
// which is audio time if the recording is one file).

/// The decision of the classifier for one track.
struct ChannelClassification {
    int trackIndex = 0;
    ChannelKind kind = ChannelKind::unknown;
    float confidence = 0;                   ///< 0 to 1
    std::string source;                     ///< the reason, for display; routing also searches its words
    std::optional<std::string> speakerName; ///< lower case, from the track's name
    bool isPreMixed = false;                ///< the track's name says "mix" or "stereo"

    bool operator==(const ChannelClassification&) const = default;
};

/// Measurements of one track over a whole take. Not stored.
struct ChannelRouteStats {
    int trackIndex = 0;
    double noiseFloorDB = 0;         ///< 20th percentile of the window levels, dBFS, within -65 to -25
    double typicalCrestFactorDB = 0; ///< median crest of the speech windows, dB
    double takeDominance = 0;        ///< rank by mean level among all tracks: 0 the quietest, 1 the loudest
    double speechCoverage = 0;       ///< share of the windows with speech, 0 to 1
    double rmsVarianceDB = 0;        ///< standard deviation of the window levels, dB

    bool operator==(const ChannelRouteStats&) const = default;
};

/// One routed block.
struct BlockDecision {
    double startSeconds = 0;
    double endSeconds = 0;             ///< exclusive
    int activeTrack = 0;               ///< 0: none
    std::optional<int> secondaryTrack; ///< only in a `multiActiveWarn` block
    BlockKind kind = BlockKind::silence;
    double gainMultiplier = 1.0; ///< linear
    double peakDB = -120.0;      ///< dBFS; -120 for digital silence
    std::string reason;          ///< the reason, for display

    bool operator==(const BlockDecision&) const = default;
};

/// Measurements of the dialogue and music stems, one value for each analysis window.
struct StemMetrics {
    std::vector<float> dialogPerWindowRMS;  ///< linear
    std::vector<float> dialogPerWindowPeak; ///< linear
    std::vector<float> musicPerWindowRMS;   ///< linear
    float musicProbability = 0;             ///< mean music RMS over mean RMS of track 1, 0 to 1

    bool operator==(const StemMetrics&) const = default;
};

/// The recommendations and measurements for one track. An absent amount means that the effect is not used.
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
    float bestSourceScore = 0;                 ///< 0 to 1; the clip's best track has the highest

    /// A uniformity alone is no adjustment: it only shapes the loudness effect.
    bool hasAdjustment() const {
        return voiceIsolationAmount || loudnessAmount || humReductionFrequency || volumeGainDB;
    }
    bool operator==(const TrackAdjustment&) const = default;
};

/// A range of time in which one track is best.
struct WindowedBestSegment {
    double startSeconds = 0;
    double endSeconds = 0;
    int bestTrackIndex = 0;

    bool operator==(const WindowedBestSegment&) const = default;
};

// The length of the windows of every analysis.
inline constexpr double smartAudioWindowSeconds = 0.25;

/// The result for one recording. Sessions hold only the editor's choices, in the SyncGroup.
struct SmartAudioResult {
    std::vector<TrackAdjustment> tracks; ///< one for each analysed track, in track order
    std::optional<int> bestTrackIndex;   ///< absent without tracks
    std::vector<WindowedBestSegment> windowedBestTracks;
    double windowDurationSeconds = smartAudioWindowSeconds;
    std::vector<BlockDecision> blocks; ///< this and the next two: only if block routing was asked for
    std::vector<ChannelClassification> channelClassifications; ///< in track order
    std::optional<MaterialCharacter> detectedCharacter;
    std::optional<StemMetrics> stemMetrics; ///< only if stems were given
    double heardSeconds = 0;                ///< length that could be read, from the beginning
    double promisedSeconds = 0;             ///< length of the recording according to its header
    /// For a recording in several files: the files that are missing or incomplete, analysed as silence there.
    std::vector<IncompleteFile> incompleteFiles;

    bool hasAdjustments() const;
    /// At least one window could be decoded.
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
