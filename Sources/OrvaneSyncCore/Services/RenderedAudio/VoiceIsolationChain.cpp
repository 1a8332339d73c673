#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationChain.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr double shelfHz = 3000, limiterAttackSeconds = 0.012, limiterDecaySeconds = 0.024;

double amount(double value) { return std::clamp(value, 0.0, 1.0); }

Compressor::Curve curveOf(const VoiceIsolationSettings& settings) {
    const double l = amount(settings.loudnessAmount), u = amount(settings.loudnessUniformity);
    return {.thresholdDB = -12 - 12 * l,
            .ratio = 1.5 + 3.5 * l,
            .attackSeconds = 0.005 + 0.015 * u,
            .releaseSeconds = 0.05 + 0.45 * u,
            .makeUpDB = 6 * l};
}

} // namespace

bool VoiceIsolationSettings::isBypass() const {
    constexpr double noAmount = 0.001, noGainDB = 0.01;
    return voiceIsoAmount <= noAmount && loudnessAmount <= noAmount && loudnessUniformity <= noAmount &&
           std::abs(masterGainDB) < noGainDB;
}

VoiceIsolationChain::VoiceIsolationChain(const VoiceIsolationSettings& settings, double sampleRate)
    : highPass_(Biquad::highPass(40 + 140 * amount(settings.voiceIsoAmount), sampleRate)),
      shelf_(Biquad::highShelf(shelfHz, 3 * amount(settings.voiceIsoAmount), sampleRate)),
      compressor_(curveOf(settings), sampleRate),
      limiter_(limiterAttackSeconds, limiterDecaySeconds, sampleRate),
      masterGain_(std::pow(10, settings.masterGainDB / 20)) {}

void VoiceIsolationChain::process(std::span<float> samples) {
    constexpr double highest = 1e6; // above every real sample, and far below an overflow
    for (float& sample : samples) {
        const double filtered = shelf_(highPass_(std::clamp(static_cast<double>(sample), -highest, highest)));
        sample = static_cast<float>(limiter_(compressor_(filtered)) * masterGain_);
        highPass_.settle();
        shelf_.settle();
    }
}

} // namespace orvane
