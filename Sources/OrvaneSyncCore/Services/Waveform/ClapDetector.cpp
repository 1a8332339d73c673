#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

namespace {

constexpr double searchedSeconds = 30;
constexpr double blockSeconds = 0.01;
/// Length of the end at which no clap is expected.
constexpr double quietSeconds = 5;
constexpr double riseOverBackground = 5;

/// Analyses one section of a recording.
class TransientSearch : public AudioListener {
  public:
    explicit TransientSearch(std::size_t hop) : hop_(hop) {}

    void samples(std::span<const float* const> channels, std::size_t frames) override {
        channels_ = channels.size();
        const std::size_t before = levels_.size();
        levels_.resize(before + frames);
        for (const float* samples : channels)
            for (std::size_t i = 0; i < frames; ++i) levels_[before + i] += std::abs(samples[i]);
        for (std::size_t done = 0; done < frames;) {
            const std::size_t some = std::min(frames - done, hop_ - (before + done) % hop_);
            for (const float* samples : channels)
                blockPeak_ = std::max(blockPeak_, platform::vector::maxMagnitude({samples + done, some}));
            done += some;
            if ((before + done) % hop_ == 0) endBlock(before + done - hop_);
        }
    }

    /// The first frame of the clap's block. `quiet`: how many frames count as quiet; they are at the end of
    /// the section for the head of a recording, at its beginning for the tail.
    std::optional<std::size_t> transient(ClapDetector::Part part, std::size_t quiet) const {
        if (levels_.empty()) return std::nullopt;
        const std::size_t count = std::min(quiet, levels_.size());
        const auto region = part == ClapDetector::Part::tail ? std::span(levels_).first(count)
                                                             : std::span(levels_).last(count);
        double sum = 0;
        for (const float level : region) sum += level;
        const double divisor = static_cast<double>(std::max<std::size_t>(count, 1) * channels_);
        const bool isClap = sum / divisor * riseOverBackground < static_cast<double>(peak_);
        return isClap ? std::optional(peakAt_) : std::nullopt;
    }

  private:
    /// Of equal peaks the first is kept.
    void endBlock(std::size_t at) {
        if (blockPeak_ > peak_) {
            peak_ = blockPeak_;
            peakAt_ = at;
        }
        blockPeak_ = 0;
    }

    std::size_t hop_; ///< frames in a block
    std::size_t channels_ = 0;
    std::vector<float> levels_; ///< for each frame the sum of the magnitudes of all channels
    float blockPeak_ = 0;       ///< of the current block; an incomplete block at the end does not count
    float peak_ = 0;
    std::size_t peakAt_ = 0;
};

/// A section of a file, in frames of the file.
struct SearchedFrames {
    std::size_t begin = 0, end = 0;

    SearchedFrames(const platform::AudioFile& file, const ClapDetector::Stretch& stretch) {
        const auto length = static_cast<std::size_t>(std::max<std::int64_t>(file.frameCount(), 0));
        const auto at = [&](double seconds) {
            const double frame = std::round(seconds * file.sampleRate());
            return frame < static_cast<double>(length) ? static_cast<std::size_t>(std::max(frame, 0.0))
                                                       : length;
        };
        begin = at(stretch.startSeconds);
        end = std::max(at(stretch.endSeconds), begin);
    }
};

/// Calls `find` with the take of a search and converts the result to audio time.
template <class Find>
std::optional<double> inAudioTime(const ClapDetector::Search& search, Find find) {
    const OpenTake take = openTake(search.sound);
    if (!take) return std::nullopt;
    const std::optional<double> found = find(*take.audio);
    take.throwIfReadFailed();
    return found ? std::optional(*found - search.primaryStartSeconds) : std::nullopt;
}

} // namespace

std::optional<ClapDetector::Search> ClapDetector::Search::of(const SyncGroup& group) {
    ClipSound heard(group);
    if (!heard.take) return std::nullopt;
    Search search(*std::move(heard.take));
    search.primaryStartSeconds = heard.primaryStartSeconds;
    if (search.sound.files.size() < 2) return search;
    const Stretch shown{std::max(-heard.offsetSeconds, 0.0),
                        group.video.durationSeconds.value_or(Stretch{}.endSeconds) - heard.offsetSeconds};
    // If a clip was moved so far by hand that it shows nothing of its take, the whole take is searched.
    if (shown.startSeconds < heard.durationSeconds && shown.startSeconds < shown.endSeconds)
        search.stretch = shown;
    return search;
}

std::optional<double> ClapDetector::detectAudioTransient(platform::AudioFile& file, Part part,
                                                         const Stretch& stretch,
                                                         const std::stop_token& stop) {
    const double rate = file.sampleRate();
    const std::size_t hop = wholeSamples(blockSeconds, rate);
    const SearchedFrames frames(file, stretch);
    const std::size_t window = std::min(frames.end - frames.begin, wholeSamples(searchedSeconds, rate));
    if (hop == 0 || window == 0 || file.channelCount() < 1) return std::nullopt;
    const std::size_t start = part == Part::tail ? frames.end - window : frames.begin;
    TransientSearch search(hop);
    std::array<AudioListener*, 1> listeners{&search};
    AudioPass{.firstFrame = static_cast<std::int64_t>(start),
              .channels = static_cast<std::size_t>(file.channelCount()),
              .windowFrames = window,
              .windows = 1,
              .stop = stop}
        .run(file, listeners);
    const auto found = search.transient(part, wholeSamples(quietSeconds, rate));
    return found ? std::optional(static_cast<double>(start + *found) / rate) : std::nullopt;
}

std::optional<double> ClapDetector::detectAudioTransient(const Search& search, Part part,
                                                         const std::stop_token& stop) {
    return inAudioTime(search, [&](platform::AudioFile& file) {
        return detectAudioTransient(file, part, search.stretch, stop);
    });
}

std::optional<double> ClapDetector::detectClapPoint(platform::AudioFile& file, const Stretch& stretch,
                                                    const std::stop_token& stop) {
    const auto head = detectAudioTransient(file, Part::head, stretch, stop);
    return head ? head : detectAudioTransient(file, Part::tail, stretch, stop);
}

std::optional<double> ClapDetector::detectClapPoint(const Search& search, const std::stop_token& stop) {
    return inAudioTime(
        search, [&](platform::AudioFile& file) { return detectClapPoint(file, search.stretch, stop); });
}

} // namespace orvane
