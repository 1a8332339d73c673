#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/Biquad.h"
#include "OrvaneSyncCore/Services/RenderedAudio/Dynamics.h"

#include <cstddef>
#include <span>

namespace orvane {

/// The strengths of the effects in the preview of Final Cut Pro's effects.
struct VoiceIsolationSettings {
    double voiceIsoAmount = 0; ///< 0 to 1; so are the next two
    double loudnessAmount = 0;
    double loudnessUniformity = 0;
    double masterGainDB = 0;

    /// Whether the settings have no audible effect.
    bool isBypass() const;
    bool operator==(const VoiceIsolationSettings&) const = default;
};

/// The chain of the preview on one channel. With v, l and u the amounts of voice isolation, loudness and
/// uniformity, clamped to 0 to 1:
///   - high-pass at 40 + 140 v Hz, high shelf of 3 v dB at 3 kHz (Biquad);
///   - compressor (Compressor): threshold -12 - 12 l dBFS, ratio 1.5 + 3.5 l, attack 5 + 15 u ms, release
///     50 + 450 u ms, make-up gain 6 l dB;
///   - limiter at 0 dBFS, attack 12 ms, decay 24 ms (Limiter);
///   - master gain, after the limiter.
/// The output does not depend on how the sound is divided into pieces. One thread at a time.
class VoiceIsolationChain {
  public:
    /// Increase it when equal settings give another sound.
    static constexpr int version = 2;

    VoiceIsolationChain(const VoiceIsolationSettings& settings, double sampleRate);
    /// In place; the samples must be finite.
    void process(std::span<float> samples);
    /// The delay of the output in samples.
    std::size_t latency() const { return limiter_.latency(); }

  private:
    Biquad highPass_, shelf_;
    Compressor compressor_;
    Limiter limiter_;
    double masterGain_; ///< linear
};

} // namespace orvane
