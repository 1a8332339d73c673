#pragma once

#include "Platform/AudioFile.h"
#include "Platform/Playback/Mixer.h"
#include "Platform/Playback/Player.h"

#include <memory>
#include <vector>

namespace orvane::platform {

/// How a clip runs along the frames of the output: second `clipSeconds` is heard at frame `outputFrame`, and
/// from there on `rate` seconds of the clip pass in each second of the output.
struct SoundTransport {
    double rate = 0; ///< signed; 0: silence
    double clipSeconds = 0;
    std::int64_t outputFrame = 0;
    PitchAlgorithm pitch = PitchAlgorithm::timeDomain;
};

/// A recording laid under a clip, as a source of the mixer. A thread of its own reads ahead, changes tempo or
/// pitch and converts to the output's rate into blocks that bear the frame of the output at which they are
/// due; the mixer takes what is due and drops what is late. The first two channels are heard, a single one on
/// both sides. At magnitudes of the rate above 2 it is silent. Changes of transport, offset and volume pass
/// over within a few milliseconds without a click.
class SoundTrack : public MixerSource {
  public:
    /// `mixer` outlives it. The file is read on the track's own thread alone.
    static std::shared_ptr<SoundTrack> create(std::unique_ptr<AudioFile> file, Mixer& mixer);

    // Interface thread; each returns at once.

    virtual void setTransport(const SoundTransport& transport) = 0;
    /// Seconds of the clip at which the file's first frame is heard. Heard within 50 ms of what the output
    /// has already asked for.
    virtual void setOffset(double seconds) = 0;
    virtual void setVolume(float volume) = 0; ///< linear, 0 to 1
    /// Seconds of the clip behind which nothing is heard.
    virtual void setEnd(double clipSeconds) = 0;

    virtual double sampleRate() const = 0; ///< of the file, Hz
    virtual int channelCount() const = 0;
    virtual double durationSeconds() const = 0;
    /// Of every channel, over the newest block that was heard; empty while silent.
    virtual std::vector<ChannelPeak> levels() const = 0;
    /// Waits until the frames of the output up to this one are ready or will never be: for outputs that are
    /// pulled by hand. Not the interface thread.
    virtual void waitUntilReady(std::int64_t untilOutputFrame) = 0;
};

} // namespace orvane::platform
