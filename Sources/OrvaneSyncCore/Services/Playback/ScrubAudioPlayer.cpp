#include "OrvaneSyncCore/Services/Playback/ScrubAudioPlayer.h"

#include "OrvaneSyncCore/Services/Playback/ScrubBlipAudio.h"
#include "OrvaneSyncCore/Services/Playback/ScrubSliceRing.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <mutex>
#include <utility>

namespace orvane {

class ScrubAudioPlayer::Source final : public platform::MixerSource {
  public:
    explicit Source(double sampleRate)
        : ring(static_cast<std::size_t>(sampleRate * ScrubBlipAudio::longestSeconds) + 1) {}

    void addTo(const platform::AudioBlock& block) noexcept override {
        for (std::size_t done = 0; done < block.frames;) {
            const std::size_t some = std::min(block.frames - done, left_.size());
            ring.render(left_.data(), right_.data(), some);
            for (std::size_t i = 0; i < some; ++i) {
                block.left[done + i] += left_[i];
                block.right[done + i] += right_[i];
            }
            done += some;
        }
    }

    ScrubSliceRing ring;

  private:
    std::array<float, 512> left_{}, right_{};
};

/// One loaded recording and its requested blips.
struct ScrubAudioPlayer::Reading {
    std::shared_ptr<Source> source;
    double outputRate = 0;
    std::atomic<bool> isOpen = true;
    /// Each blip and each silence gets the next number; a blip is played only if its number is still the
    /// newest.
    std::mutex mutex;
    std::uint64_t newest = 0;
    OpenTake take; ///< used on the queue only

    void open(const TakeSound& sound) {
        try {
            take = openTake(sound);
        } catch (const std::exception&) {
            take = {};
        }
        isOpen = static_cast<bool>(take);
    }
    void play(std::uint64_t number, double atSourceSeconds, double seconds, float volume) {
        {
            const std::lock_guard lock(mutex);
            if (number != newest) return;
        }
        std::optional<AudioSlice> slice;
        try {
            slice = ScrubBlipAudio::readStereoSlice(*take.audio, atSourceSeconds, seconds);
        } catch (const std::exception&) {
            return; // nothing is played if reading fails
        }
        if (!slice) return;
        const AudioSlice converted = ScrubBlipAudio::atRate(*slice, outputRate);
        const std::lock_guard lock(mutex);
        if (number == newest) source->ring.publish(converted, volume);
    }
    std::uint64_t next() {
        const std::lock_guard lock(mutex);
        return ++newest;
    }
    void silence() {
        const std::lock_guard lock(mutex);
        ++newest;
        source->ring.silence();
    }
};

ScrubAudioPlayer::ScrubAudioPlayer(std::shared_ptr<platform::Mixer> mixer)
    : mixer_(std::move(mixer)), source_(std::make_shared<Source>(mixer_->sampleRate())),
      queue_(platform::SerialQueue::create("scrub-sound")) {}

ScrubAudioPlayer::~ScrubAudioPlayer() {
    shutdown();
    stop_.request_stop();
}

void ScrubAudioPlayer::load(std::optional<TakeSound> sound) {
    if (sound == loaded_) return;
    silence();
    reading_.reset();
    loaded_ = std::move(sound);
    if (!loaded_) return leaveMixer();
    reading_ = std::make_shared<Reading>();
    reading_->source = source_;
    reading_->outputRate = mixer_->sampleRate();
    queue_->post([reading = reading_, wanted = *loaded_] { reading->open(wanted); }, stop_.get_token());
}

bool ScrubAudioPlayer::hasOpenFile() const { return reading_ && reading_->isOpen; }

void ScrubAudioPlayer::playBlip(double atSourceSeconds, double seconds, float volume) {
    if (!(volume > 0) || !hasOpenFile()) return;
    if (!isInMixer_) isInMixer_ = mixer_->add(source_);
    if (!isInMixer_) return;
    queue_->post([reading = reading_, number = reading_->next(), atSourceSeconds,
                  length = std::min(seconds, ScrubBlipAudio::longestSeconds),
                  volume] { reading->play(number, atSourceSeconds, length, volume); },
                 stop_.get_token());
}

void ScrubAudioPlayer::silence() {
    if (reading_) reading_->silence();
}

void ScrubAudioPlayer::shutdown() {
    silence();
    reading_.reset();
    loaded_.reset();
    leaveMixer();
}

void ScrubAudioPlayer::leaveMixer() {
    if (std::exchange(isInMixer_, false)) mixer_->remove(*source_);
}

void ScrubAudioPlayer::waitUntilIdle() {
    queue_->sync([] {});
}

} // namespace orvane
