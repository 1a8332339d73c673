#include "Platform/SoundLibrary/SoundLibraries.h"

#include <cmath>
#include <soundtouch/SoundTouch.h>

namespace orvane::platform {

namespace {

class SoundTouchTempoChange final : public TempoChange {
  public:
    explicit SoundTouchTempoChange(const Options& options) {
        library_.setSampleRate(static_cast<unsigned>(std::lround(options.sampleRate)));
        library_.setChannels(channels);
        // Pitch and rate stay: the filter against their images would only delay.
        library_.setSetting(SETTING_USE_AA_FILTER, 0);
        library_.setSetting(SETTING_USE_QUICKSEEK, options.isQuick ? 1 : 0);
        library_.setTempo(options.tempo);
    }

    void put(const float* frames, std::size_t count) override {
        library_.putSamples(frames, static_cast<unsigned>(count));
    }
    std::size_t take(float* frames, std::size_t most) override {
        return library_.receiveSamples(frames, static_cast<unsigned>(most));
    }

  private:
    static constexpr unsigned channels = 2;
    soundtouch::SoundTouch library_;
};

} // namespace

std::unique_ptr<TempoChange> soundTouchTempoChange(const TempoChange::Options& options) {
    return std::make_unique<SoundTouchTempoChange>(options);
}

std::string soundTouchVersion() {
    return std::string("SoundTouch ") + soundtouch::SoundTouch::getVersionString();
}

} // namespace orvane::platform
