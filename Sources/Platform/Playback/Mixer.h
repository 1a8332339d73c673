#pragma once

#include "Platform/Playback/AudioOutput.h"

#include <memory>

namespace orvane::platform {

/// One sound of the mix. Called in the callback of the device: does not lock, allocate, throw or wait.
class MixerSource {
  public:
    virtual ~MixerSource() = default;
    /// Adds its sound to the block, which may already hold other sound.
    virtual void addTo(const AudioBlock& block) noexcept = 0;
};

/// The one stream through which the program plays all sound, and the time axis of all playback: frames of the
/// output. It starts with the first source and stops when there was none for some seconds.
class Mixer : public AudioRenderer {
  public:
    /// Most sources at a time; one more is refused.
    static constexpr std::size_t mostSources = 64;

    /// How long the output continues without a source.
    static constexpr std::chrono::seconds idleTime{5};

    /// `mainThread`: its timer ends `idleTime`; with null the output never stops by itself.
    static std::shared_ptr<Mixer> create(std::unique_ptr<AudioOutput> output,
                                         std::shared_ptr<MainThread> mainThread = nullptr);

    virtual double sampleRate() const = 0; ///< Hz
    /// Interface thread. False if there are too many, or if it was added already. After `remove` has
    /// returned, no call of the source is running; it waits for at most one block.
    virtual bool add(std::shared_ptr<MixerSource> source) = 0;
    virtual void remove(const MixerSource& source) = 0;

    /// The frame that is heard at this moment. Any thread.
    virtual double heardFrame() const = 0;
    /// The first frame that was not requested yet: no earlier frame can be changed. Any thread.
    virtual std::int64_t renderedFrames() const = 0;
    virtual AudioOutput& output() = 0;
};

} // namespace orvane::platform
