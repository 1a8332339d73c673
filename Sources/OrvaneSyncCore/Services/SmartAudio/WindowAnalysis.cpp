#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// dBFS; a louder window counts as speech. There is no other test for speech.
constexpr float speechGateDB = -50.0F;
/// Linear; quieter values count as this one, -200 dBFS.
constexpr float quietestLevel = 1e-10F;
/// Linear; a lower peak is too small for a comparison with the average.
constexpr float quietestPeak = 1e-6F;

/// Decibels are computed in 64 bits and rounded once, so that they do not depend on the precision of a
/// machine's 32-bit logarithm. Sums are in 64 bits, so that they stay exact for any number of windows.
float decibels(double ratio) { return static_cast<float>(20.0 * std::log10(ratio)); }

float mean(const std::vector<float>& values) {
    if (values.empty()) return 0;
    double sum = 0;
    for (const float value : values) sum += value;
    return static_cast<float>(sum / static_cast<double>(values.size()));
}

template <class T>
void appendAll(std::vector<T>& to, const std::vector<T>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

float dynamicRangeDB(float maxPeak, float averageRMS) {
    if (!(maxPeak > quietestPeak)) return 0;
    return decibels(static_cast<double>(maxPeak) / std::max(averageRMS, quietestPeak));
}

/// The loudest track with speech, counted from 1; track 1 if none has speech.
int loudestSpeaker(std::span<const TrackAnalysis> analyses, std::size_t window) {
    int best = 1;
    float bestScore = -1.0F;
    for (std::size_t i = 0; i < analyses.size(); ++i) {
        const TrackAnalysis& track = analyses[i];
        if (window >= track.windowRMS.size()) continue;
        const float score = track.windowHasSpeech[window] ? track.windowRMS[window] : 0.0F;
        if (score > bestScore) {
            bestScore = score;
            best = static_cast<int>(i) + 1;
        }
    }
    return best;
}

} // namespace

void TrackAnalysis::add(float rms, float peak, float zeroCrossingRate) {
    const bool hasSpeech = WindowAnalysis::levelDB(rms) > speechGateDB;
    windowRMS.push_back(rms);
    windowPeaks.push_back(peak);
    windowHasSpeech.push_back(hasSpeech);
    spectralCentroids.push_back(zeroCrossingRate);
    if (hasSpeech) ++speechWindows;
    ++totalWindows;
    maxPeak = std::max(maxPeak, peak);
}

void TrackAnalysis::append(const TrackAnalysis& behind) {
    appendAll(windowRMS, behind.windowRMS);
    appendAll(windowPeaks, behind.windowPeaks);
    appendAll(windowHasSpeech, behind.windowHasSpeech);
    appendAll(spectralCentroids, behind.spectralCentroids);
    speechWindows += behind.speechWindows;
    totalWindows += behind.totalWindows;
    maxPeak = std::max(maxPeak, behind.maxPeak);
}

float TrackAnalysis::averageRMS() const { return mean(windowRMS); }

float TrackAnalysis::averageZeroCrossingRate() const { return mean(spectralCentroids); }

float TrackAnalysis::speechRatio() const {
    if (totalWindows == 0) return 0;
    return static_cast<float>(speechWindows) / static_cast<float>(totalWindows);
}

float WindowAnalysis::levelDB(float linear) { return decibels(std::max(linear, quietestLevel)); }

std::vector<ChannelStats> WindowAnalysis::channelStats(std::span<const TrackAnalysis> analyses) {
    std::vector<ChannelStats> stats;
    for (const TrackAnalysis& track : analyses) {
        ChannelStats one;
        one.trackIndex = static_cast<int>(stats.size()) + 1;
        one.averageRMS = track.averageRMS();
        one.peakRMS = track.maxPeak;
        one.spectralWidth = track.averageZeroCrossingRate();
        one.dynamicRangeDB = dynamicRangeDB(track.maxPeak, one.averageRMS);
        one.speechRatio = track.speechRatio();
        stats.push_back(one);
    }
    return stats;
}

std::vector<SmartAudioBlockRouter::PerWindowFrame>
WindowAnalysis::frames(std::span<const TrackAnalysis> analyses) {
    std::vector<SmartAudioBlockRouter::PerWindowFrame> frames;
    if (analyses.empty()) return frames;
    for (std::size_t window = 0; window < analyses.front().windowRMS.size(); ++window) {
        auto& frame = frames.emplace_back();
        frame.index = static_cast<int>(window);
        for (std::size_t i = 0; i < analyses.size(); ++i) {
            const TrackAnalysis& track = analyses[i];
            if (window >= track.windowRMS.size()) continue;
            frame.perChannel.push_back({static_cast<int>(i) + 1, track.windowRMS[window],
                                        track.windowPeaks[window], track.windowHasSpeech[window],
                                        track.spectralCentroids[window]});
        }
    }
    return frames;
}

std::vector<WindowedBestSegment>
WindowAnalysis::computePerWindowBestSegments(std::span<const TrackAnalysis> analyses, double windowSeconds,
                                             double minSegmentSeconds) {
    std::vector<WindowedBestSegment> runs;
    if (analyses.empty()) return runs;
    for (std::size_t window = 0; window < analyses.front().windowRMS.size(); ++window) {
        const int best = loudestSpeaker(analyses, window);
        const double start = static_cast<double>(window) * windowSeconds;
        if (runs.empty() || runs.back().bestTrackIndex != best) runs.push_back({start, start, best});
        runs.back().endSeconds = static_cast<double>(window + 1) * windowSeconds;
    }

    std::vector<WindowedBestSegment> segments;
    for (const WindowedBestSegment& run : runs) {
        if (!segments.empty() && run.endSeconds - run.startSeconds < minSegmentSeconds)
            segments.back().endSeconds = run.endSeconds;
        else
            segments.push_back(run);
    }
    return segments;
}

std::vector<WindowedBestSegment>
WindowAnalysis::toLegacyWindowedSegments(const std::vector<BlockDecision>& blocks) {
    std::vector<WindowedBestSegment> segments;
    for (const BlockDecision& block : blocks)
        if (block.activeTrack >= 1)
            segments.push_back({block.startSeconds, block.endSeconds, block.activeTrack});
    return segments;
}

} // namespace orvane
