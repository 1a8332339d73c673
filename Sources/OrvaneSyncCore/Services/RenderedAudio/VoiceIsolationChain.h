#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/Biquad.h"
#include "OrvaneSyncCore/Services/RenderedAudio/Dynamics.h"

#include <cstddef>
#include <span>

namespace orvane {

/// How strongly the preview of Final Cut Pro's effects treats a recording.
struct VoiceIsolationSettings {
    double voiceIsoAmount = 0; ///< 0 to 1, as the next two
    double loudnessAmount = 0;
    double loudnessUniformity = 0;
    double masterGainDB = 0;

    /// Nothing in it that could be heard.
    bool isBypass() const;
    bool operator==(const VoiceIsolationSettings&) const = default;
};

/// The chain of the preview on one channel. With v, l and u the amounts of voice isolation, loudness and
/// uniformity, held within 0 and 1:
///   - high-pass at 40 + 140 v Hz, high shelf of 3 v dB at 3 kHz (Biquad);
///   - compressor (Compressor): threshold -12 - 12 l dBFS, ratio 1.5 + 3.5 l, attack 5 + 15 u ms, release
///     50 + 450 u ms, make-up gain 6 l dB;
///   - limiter at 0 dBFS, attack 12 ms, decay 24 ms (Limiter);
///   - master gain, behind the limiter.
/// What comes out does not depend on how the sound is cut into pieces. One thread at a time.
class VoiceIsolationChain {
  public:
    /// Raised when the same settings sound different.
    static constexpr int version = 2;

    VoiceIsolationChain(const VoiceIsolationSettings& settings, double sampleRate);
    /// In place. Finite samples.
    void process(std::span<float> samples);
    /// Samples by which what comes out is late.
    std::size_t latency() const { return limiter_.latency(); }

  private:
    Biquad highPass_, shelf_;
    Compressor compressor_;
    Limiter limiter_;
    double masterGain_; ///< linear
};

} // namespace orvane
