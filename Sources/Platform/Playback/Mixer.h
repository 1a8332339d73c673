#pragma once

#include "Platform/Playback/AudioOutput.h"

#include <memory>

namespace orvane::platform {

/// One sound of the mix. Called on the time of the device: neither locks nor allocates nor throws nor waits.
class MixerSource {
  public:
    virtual ~MixerSource() = default;
    /// Adds its sound to the block, which may hold that of others.
    virtual void addTo(const AudioBlock& block) noexcept = 0;
};

/// The one stream that everything of the program sounds through, and the time axis of all that plays: frames
/// of the output. It starts with the first source and stops when none has been there for some seconds.
class Mixer : public AudioRenderer {
  public:
    /// Sources that sound at once, at most; one more is refused.
    static constexpr std::size_t mostSources = 64;

    /// How long the output runs on without a source.
    static constexpr std::chrono::seconds idleTime{5};

    /// `mainThread`: waits for the end of `idleTime`; with null the output never stops by itself.
    static std::shared_ptr<Mixer> create(std::unique_ptr<AudioOutput> output,
                                         std::shared_ptr<MainThread> mainThread = nullptr);

    virtual double sampleRate() const = 0; ///< Hz
    /// Interface thread. False where there are too many, or where it is there already. No call of the source
    /// is under way once `remove` has returned, which waits for at most one block.
    virtual bool add(std::shared_ptr<MixerSource> source) = 0;
    virtual void remove(const MixerSource& source) = 0;

    /// The frame that is heard at this moment. Any thread.
    virtual double heardFrame() const = 0;
    /// The first frame that was not asked for yet: nothing earlier can be changed any more. Any thread.
    virtual std::int64_t renderedFrames() const = 0;
    virtual AudioOutput& output() = 0;
};

} // namespace orvane::platform
