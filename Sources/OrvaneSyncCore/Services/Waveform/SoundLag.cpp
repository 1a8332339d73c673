#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "Platform/MainThread.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace orvane::SoundLag {

namespace {

// A slate is at the head, and with it the plainest sound of a clip.
constexpr double heardSeconds = 10;
// Whoever records more has a mix or a boom among the first.
constexpr int mostChannels = 4;
constexpr double leastSeconds = 3; // in common
constexpr std::size_t fewestPairs = 3, mostPairsOfACard = 6, mostPairs = 30;
// What is softer than the loudest by more is the noise of two different microphones.
constexpr float floorDB = 40;
constexpr double steadyDB = 1.5; // standard deviation
constexpr double likeness = 0.6; // correlation, 1 for the same
// By which the best place is ahead of all that are not right beside it.
constexpr double ahead = 0.1;
// Of the first clips of a card; then the others would say the same.
constexpr double agreeingSeconds = 0.1;
constexpr int besideBins = 30;

/// The level of all channels together, window by window.
class Levels : public AudioListener {
  public:
    void samples(std::span<const float* const> channels, std::size_t frames) override {
        for (const float* channel : channels)
            for (std::size_t i = 0; i < frames; ++i) energy_ += double{channel[i]} * double{channel[i]};
        count_ += frames * channels.size();
    }
    void windowEnded() override {
        constexpr double silence = 1e-12;
        const double mean = count_ > 0 ? energy_ / static_cast<double>(count_) : 0;
        dB.push_back(static_cast<float>(10 * std::log10(mean + silence)));
        energy_ = 0;
        count_ = 0;
    }

    std::vector<float> dB;

  private:
    double energy_ = 0;
    std::size_t count_ = 0;
};

std::vector<float> levelsOf(platform::AudioFile* file, double from, double seconds,
                            const std::stop_token& stop) {
    Levels levels;
    if (file == nullptr || !(file->sampleRate() > 0) || file->channelCount() < 1) return {};
    std::array<AudioListener*, 1> listeners{&levels};
    AudioPass{.firstFrame = static_cast<std::int64_t>(std::llround(from * file->sampleRate())),
              .channels = static_cast<std::size_t>(std::min(file->channelCount(), mostChannels)),
              .windowFrames = wholeSamples(1 / binsPerSecond, file->sampleRate()),
              .windows = static_cast<std::size_t>(seconds * binsPerSecond),
              .stop = stop}
        .run(*file, listeners);
    return std::move(levels.dB);
}

/// The two files of a pair, each opened once.
class Listening {
  public:
    Listening(const Pair& pair, std::stop_token stop)
        : pair_(pair), stop_(std::move(stop)), camera_(platform::AudioFile::openAllTracks(pair.camera.path)),
          take_(openTake(pair.recording)) {}

    std::optional<HeardLag> lag() const {
        const auto atHead = lagAt(0);
        if (!atHead) return std::nullopt;
        HeardLag lag{*atHead};
        if (pair_.lengthSeconds < leastForDriftSeconds) return lag;
        const double tail = pair_.lengthSeconds - heardSeconds;
        if (const auto atTail = lagAt(tail)) lag.drift = (*atTail - *atHead) / tail;
        return lag;
    }

  private:
    /// Of what is heard from that moment of the clip on.
    std::optional<double> lagAt(double seconds) const {
        const auto own = levelsOf(camera_.get(), seconds, heardSeconds, stop_);
        if (!take_ || static_cast<double>(own.size()) < leastSeconds * binsPerSecond) return std::nullopt;
        const double place = seconds - pair_.offsetSeconds;
        const double from = std::max(0.0, place - furthestSeconds);
        const double to = place + heardSeconds + furthestSeconds;
        if (to <= from) return std::nullopt;
        const auto other = levelsOf(take_.audio.get(), from, to - from, stop_);
        if (camera_->failedAt() || take_.audio->failedAt()) return std::nullopt;
        return between(own, other, from - place);
    }

    const Pair& pair_;
    const std::stop_token stop_;
    const std::unique_ptr<platform::AudioFile> camera_;
    const OpenTake take_;
};

std::vector<float> aboveTheFloor(std::span<const float> levels) {
    const float loudest = std::ranges::max(levels);
    std::vector<float> result(levels.begin(), levels.end());
    for (float& level : result) level = std::max(level, loudest - floorDB);
    return result;
}

/// Sums over the bins that two stretches have in common.
struct Sums {
    double count = 0, a = 0, b = 0, aa = 0, bb = 0, ab = 0;

    static double spread(double sum, double squares, double count) {
        return std::sqrt(std::max(0.0, squares / count - sum * sum / (count * count)));
    }
    double correlation() const {
        const double spreadA = spread(a, aa, count), spreadB = spread(b, bb, count);
        if (spreadA < steadyDB || spreadB < steadyDB) return 0;
        return (ab / count - a * b / (count * count)) / (spreadA * spreadB);
    }
};

std::string_view folderOf(const FileURL& file) {
    return std::string_view(file.path).substr(0, file.path.rfind('/'));
}

bool liesUnderAll(const AudioMatch& match, double clipSeconds) {
    constexpr double slackSeconds = 1; // a slow hand at the recorder
    return match.syncOffsetSeconds <= slackSeconds &&
           match.syncOffsetSeconds + match.audio->durationSeconds.value_or(0) >= clipSeconds - slackSeconds;
}

bool areOfOneCard(const Pair& a, const Pair& b) {
    return folderOf(a.camera) == folderOf(b.camera) &&
           folderOf(a.recording.files.front().url) == folderOf(b.recording.files.front().url);
}

} // namespace

std::vector<Pair> pairsToHear(const SyncGroupList& groups) {
    struct Heard {
        const SyncGroup* group;
        const AudioMatch* match;
    };
    std::map<std::pair<std::string_view, std::string_view>, std::vector<Heard>> cards;
    for (const SyncGroup& group : groups) {
        if (group.audioMatches.empty() || !group.matchStatus.isSettled() || group.isLocked ||
            group.isExcludedFromExport || group.manualAudioOffsetSeconds != 0 || group.video.isOffspeed() ||
            group.video.channelCount.value_or(0) <= 0 ||
            group.video.durationSeconds.value_or(0) < leastSeconds)
            continue;
        const std::string_view camera = folderOf(group.video.url);
        cards[{camera, folderOf(group.primaryAudio()->url)}].push_back({&group, &group.audioMatches.front()});
        if (group.audioMatches.size() < 2) continue;
        for (const TakeFile& file : takeOf(group, assumedChannels).files) {
            const AudioMatch& match = group.audioMatches[file.matchIndex];
            if (file.role != TakeRole::alternate || liesUnderAll(match, *group.video.durationSeconds))
                continue;
            auto& card = cards[{camera, folderOf(match.audio->url)}];
            if (card.empty() || card.back().group != &group) card.push_back({&group, &match});
        }
    }
    std::erase_if(cards, [](const auto& card) { return card.second.size() < fewestPairs; });
    std::vector<Pair> pairs;
    if (cards.empty()) return pairs;
    const std::size_t each = std::clamp(mostPairs / cards.size(), fewestPairs, mostPairsOfACard);
    const auto isShort = [](const Heard& one) {
        return *one.group->video.durationSeconds < leastForDriftSeconds;
    };
    for (auto& [folders, clips] : cards) {
        if (std::cmp_greater_equal(std::ranges::count_if(clips, std::not_fn(isShort)), fewestPairs))
            std::erase_if(clips, isShort);
        const std::size_t count = std::min(each, clips.size());
        for (std::size_t i = 0; i < count; ++i) {
            const auto& [group, match] = clips[i * clips.size() / count];
            const double length = *group->video.durationSeconds;
            if (match != &group->audioMatches.front()) {
                pairs.push_back(
                    {match->id, group->video.url, match->audio->url, match->syncOffsetSeconds, length});
                continue;
            }
            const ClipSound sound(*group);
            pairs.push_back({match->id, group->video.url, *sound.take, sound.offsetSeconds, length});
        }
    }
    return pairs;
}

std::optional<double> between(std::span<const float> camera, std::span<const float> recording,
                              double offsetSeconds) {
    if (camera.empty() || recording.empty()) return std::nullopt;
    const auto own = aboveTheFloor(camera), other = aboveTheFloor(recording);
    const auto base = std::lround(offsetSeconds * binsPerSecond);
    constexpr int most = static_cast<int>(furthestSeconds * binsPerSecond);
    std::array<double, 2 * most + 1> likenesses{};
    for (int lag = -most; lag <= most; ++lag) {
        const std::ptrdiff_t shift = base + lag; // bin i of the camera is bin i - shift of the recording
        const auto first = std::max<std::ptrdiff_t>(0, shift);
        const auto last = std::min(std::ssize(own), std::ssize(other) + shift);
        if (static_cast<double>(last - first) < leastSeconds * binsPerSecond) continue;
        Sums sums;
        for (auto i = first; i < last; ++i) {
            const double a = own[static_cast<std::size_t>(i)], b = other[static_cast<std::size_t>(i - shift)];
            sums.a += a;
            sums.b += b;
            sums.aa += a * a;
            sums.bb += b * b;
            sums.ab += a * b;
        }
        sums.count = static_cast<double>(last - first);
        const int place = lag + most;
        likenesses[static_cast<std::size_t>(place)] = sums.correlation();
    }
    const auto best = std::ranges::max_element(likenesses);
    if (*best < likeness) return std::nullopt;
    for (auto other = likenesses.begin(); other != likenesses.end(); ++other)
        if (std::abs(other - best) > besideBins && *other > *best - ahead) return std::nullopt;
    return static_cast<double>(best - likenesses.begin() - most) / binsPerSecond;
}

std::unordered_map<UUID, HeardLag> heard(const std::vector<Pair>& pairs, const std::stop_token& stop,
                                         const std::function<void(std::size_t done)>& progress) {
    std::unordered_map<UUID, HeardLag> lags;
    std::size_t done = 0;
    std::mutex mutex;
    const auto nowDone = [&](std::size_t more) {
        const std::lock_guard lock(mutex);
        done += more;
        if (progress && more > 0) progress(done);
    };
    std::vector<std::span<const Pair>> cards;
    for (auto first = pairs.begin(); first != pairs.end();) {
        const auto last =
            std::find_if(first, pairs.end(), [&](const Pair& one) { return !areOfOneCard(*first, one); });
        cards.emplace_back(first, last);
        first = last;
    }
    constexpr std::size_t atOnce = 4;
    platform::concurrently(
        cards.size(), atOnce,
        [&](std::size_t card) {
            std::vector<double> found;
            std::size_t drifts = 0, tried = 0;
            for (const Pair& pair : cards[card]) {
                if (found.size() >= fewestPairs && (drifts == 0 || drifts >= fewestPairs) &&
                    std::ranges::max(found) - std::ranges::min(found) <= agreeingSeconds)
                    break;
                const auto lag = Listening(pair, stop).lag();
                ++tried;
                nowDone(1);
                if (!lag) continue;
                found.push_back(lag->seconds);
                drifts += lag->drift ? 1 : 0;
                const std::lock_guard lock(mutex);
                lags.emplace(pair.matchID, *lag);
            }
            nowDone(cards[card].size() - tried);
        },
        stop);
    return lags;
}

} // namespace orvane::SoundLag
