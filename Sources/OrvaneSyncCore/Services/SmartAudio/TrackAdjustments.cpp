#include "OrvaneSyncCore/Services/SmartAudio/TrackAdjustments.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr float speechShare = 0.1F; ///< of the windows; a track with a higher share is treated as dialogue
constexpr float smallestGainDB = 0.5F;
constexpr float largestGainDB = 12.0F;

constexpr std::size_t fewestWindowsForNoise = 4; ///< so that the quietest quarter has at least one window
constexpr float cleanSNR = 60.0F;                ///< dB, if no noise can be measured
constexpr float bestSNR = 40.0F;                 ///< dB; a higher value does not make a track better
constexpr double quietest = 1e-10;               ///< linear, -200 dBFS

constexpr float humLevelDB = -50.0F;
constexpr float humCrossingRate = 0.02F; ///< crossings per sample: 480 Hz at 48 kHz

/// The share is computed first, so that the score of a clean track is exactly its speech ratio.
float bestSourceScore(float speechRatio, float snr) {
    return speechRatio * (std::clamp(snr, 0.0F, bestSNR) / bestSNR);
}

TrackAdjustment measured(int trackIndex, const TrackAnalysis& analysis) {
    TrackAdjustment track;
    track.trackIndex = trackIndex;
    track.speechRatio = analysis.speechRatio();
    track.averageLevelDB = WindowAnalysis::levelDB(analysis.averageRMS());
    track.estimatedSNR = TrackAdjustments::estimatedSNR(analysis);
    track.bestSourceScore = bestSourceScore(track.speechRatio, track.estimatedSNR);
    return track;
}

void recommendForSpeech(TrackAdjustment& track, SmartAudioMode mode, const SmartAudioConfig& config) {
    const bool isNoisy = track.estimatedSNR < config.voiceIsolationSNRThreshold;
    if (config.voiceIsolationAmount > 0 && (mode == SmartAudioMode::custom || isNoisy))
        track.voiceIsolationAmount = config.voiceIsolationAmount;
    if (config.loudnessAmount > 0) {
        track.loudnessAmount = config.loudnessAmount;
        track.loudnessUniformity = config.loudnessUniformity;
    }
    if (config.loudnessTargetDB < 0) {
        const float delta = config.loudnessTargetDB - track.averageLevelDB;
        if (std::abs(delta) > smallestGainDB)
            track.volumeGainDB = std::clamp(delta, -largestGainDB, largestGainDB);
    }
}

} // namespace

std::vector<TrackAdjustment> TrackAdjustments::generateAdjustments(std::span<const TrackAnalysis> analyses,
                                                                   SmartAudioMode mode,
                                                                   const SmartAudioConfig& config) {
    std::vector<TrackAdjustment> tracks;
    for (const TrackAnalysis& analysis : analyses) {
        TrackAdjustment track = measured(static_cast<int>(tracks.size()) + 1, analysis);
        if (mode != SmartAudioMode::off) {
            if (track.speechRatio > speechShare) recommendForSpeech(track, mode, config);
            if (config.autoHumReduction && hasHum(analysis))
                track.humReductionFrequency = config.humFrequency;
        }
        tracks.push_back(track);
    }
    return tracks;
}

float TrackAdjustments::estimatedSNR(const TrackAnalysis& analysis) {
    const std::size_t count = analysis.windowRMS.size();
    if (count < fewestWindowsForNoise) return cleanSNR;
    std::vector<float> sorted = analysis.windowRMS;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t quarter = count / 4;
    double noise = 0;
    for (std::size_t i = 0; i < quarter; ++i) noise += sorted[i];
    noise /= static_cast<double>(quarter);
    if (!(noise > 0)) return cleanSNR;
    const double signal = std::max<double>(analysis.averageRMS(), quietest);
    return static_cast<float>(20.0 * std::log10(signal / std::max(noise, quietest)));
}

bool TrackAdjustments::hasHum(const TrackAnalysis& analysis) {
    if (!(WindowAnalysis::levelDB(analysis.averageRMS()) > humLevelDB)) return false;
    return analysis.spectralCentroids.empty() || analysis.averageZeroCrossingRate() < humCrossingRate;
}

std::optional<int> TrackAdjustments::bestTrackIndex(std::span<const TrackAdjustment> tracks) {
    const auto best = std::ranges::max_element(tracks, {}, &TrackAdjustment::bestSourceScore);
    if (best == tracks.end()) return std::nullopt;
    return best->trackIndex;
}

} // namespace orvane
