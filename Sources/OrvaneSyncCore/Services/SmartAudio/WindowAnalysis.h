#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <span>
#include <vector>

namespace orvane {

/// The measurements of a pass for one track. The arrays have one value for each window.
struct TrackAnalysis {
    std::vector<float> windowRMS;   ///< linear
    std::vector<float> windowPeaks; ///< linear
    std::vector<bool> windowHasSpeech;
    int speechWindows = 0;
    int totalWindows = 0;
    float maxPeak = 0;                    ///< linear
    std::vector<float> spectralCentroids; ///< zero-crossing rates, crossings per sample

    /// Appends a window and decides whether it has speech.
    void add(float rms, float peak, float zeroCrossingRate);
    /// Appends the windows of a later part of the same track.
    void append(const TrackAnalysis& behind);

    float averageRMS() const; ///< mean of `windowRMS`, linear; 0 without windows
    float averageZeroCrossingRate() const;
    float speechRatio() const;

    bool operator==(const TrackAnalysis&) const = default;
};

/// Converts a track's windows for classification and routing. Pure; any thread.
namespace WindowAnalysis {

/// 20·log10; silence is -200 dBFS.
float levelDB(float linear);

/// Track numbers are the index in `analyses` + 1; in that order.
std::vector<ChannelStats> channelStats(std::span<const TrackAnalysis> analyses);

/// As many frames as track 1 has windows.
std::vector<SmartAudioBlockRouter::PerWindowFrame> frames(std::span<const TrackAnalysis> analyses);

/// The loudest track with speech, window by window; a run that is shorter than `minSegmentSeconds` joins the
/// segment before it. For clips that are not routed in blocks.
std::vector<WindowedBestSegment> computePerWindowBestSegments(std::span<const TrackAnalysis> analyses,
                                                              double windowSeconds, double minSegmentSeconds);

/// For each block with a track, its time range.
std::vector<WindowedBestSegment> toLegacyWindowedSegments(const std::vector<BlockDecision>& blocks);

} // namespace WindowAnalysis
} // namespace orvane
