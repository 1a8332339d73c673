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
        // Pitch and rate do not change: a filter against aliases would only delay.
        library_.setSetting(SETTING_USE_AA_FILTER, 0);
        library_.setSetting(SETTING_USE_QUICKSEEK, options.isQuick ? 1 : 0);
        if (options.tempo > 1) {
            library_.setSetting(SETTING_SEQUENCE_MS, sequenceMilliseconds);
            library_.setSetting(SETTING_SEEKWINDOW_MS, seekMilliseconds);
            library_.setSetting(SETTING_OVERLAP_MS, overlapMilliseconds);
        }
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
    // At faster rates, sequences of the sound overlap each other and the parts between them are left out. Up
    // to twice the speed almost nothing is left out with this length, so that a clap of some milliseconds is
    // heard wherever it is, and near its place. Longer sequences would be smoother, but lose it. The seek
    // window is as long as a period of a low voice.
    static constexpr int sequenceMilliseconds = 14;
    static constexpr int seekMilliseconds = 10;
    static constexpr int overlapMilliseconds = 7;
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
