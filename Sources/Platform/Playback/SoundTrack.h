#pragma once

#include "Platform/AudioFile.h"
#include "Platform/Playback/Mixer.h"
#include "Platform/Playback/Player.h"

#include <memory>
#include <vector>

namespace orvane::platform {

/// How a clip runs along the frames of the output: second `clipSeconds` is heard at frame `outputFrame`, and
/// from there on each second of the output plays `rate` seconds of the clip.
struct SoundTransport {
    double rate = 0; ///< signed; 0: silence
    double clipSeconds = 0;
    std::int64_t outputFrame = 0;
    PitchAlgorithm pitch = PitchAlgorithm::timeDomain;
};

/// A recording under a clip, as a source of the mixer. Its own thread reads ahead, changes tempo or pitch and
/// converts to the output's rate into blocks that state the frame of the output at which they are due. The
/// mixer takes the blocks that are due and drops late ones. The first two channels are heard; a single one on
/// both sides. At rates above 2 in magnitude it is silent. Changes of transport, offset and volume fade
/// within a few milliseconds without a click.
class SoundTrack : public MixerSource {
  public:
    /// `mixer` outlives it. The file is read on the track's own thread alone.
    static std::shared_ptr<SoundTrack> create(std::unique_ptr<AudioFile> file, Mixer& mixer);

    // Interface thread; each returns at once.

    virtual void setTransport(const SoundTransport& transport) = 0;
    /// The time of the clip, in seconds, at which the file's first frame is heard. The change is heard within
    /// 50 ms after what the output has already requested.
    virtual void setOffset(double seconds) = 0;
    virtual void setVolume(float volume) = 0; ///< linear, 0 to 1
    /// The time of the clip, in seconds, after which nothing is heard.
    virtual void setEnd(double clipSeconds) = 0;

    virtual double sampleRate() const = 0; ///< of the file, Hz
    virtual int channelCount() const = 0;
    virtual double durationSeconds() const = 0;
    /// The level of every channel, over the newest block that was heard; empty while silent.
    virtual std::vector<ChannelPeak> levels() const = 0;
    /// Waits until the frames of the output up to this one are ready or known to be missing: for outputs that
    /// the caller drives. Not the interface thread.
    virtual void waitUntilReady(std::int64_t untilOutputFrame) = 0;
};

} // namespace orvane::platform
