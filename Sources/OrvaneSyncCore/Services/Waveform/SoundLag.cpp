#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"

#include "OrvaneSyncCore/Services/Ingest/LTCWordReader.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Waveform/SoundPlace.h"
#include "Platform/MainThread.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <unordered_set>
#include <utility>

namespace orvane::SoundLag {

namespace {

// The slate is at the head, and it is the clearest sound of a clip.
constexpr double heardSeconds = 10;
// A recording with more channels has a mix or a boom among the first ones.
constexpr int mostChannels = 4;
// In a longer search more places match by chance, so more sound is compared.
constexpr double heardFarSeconds = 20;
// A recorder starts before the camera, usually by no more than this.
constexpr double rollsBeforeSeconds = 30;
// A recording that goes on during many clips is under them even if a clock is wrong by minutes.
constexpr double leastLongSeconds = 600, furthestInLongSeconds = 300;
// In so long a search, matches by chance reach higher scores than in one of a minute.
constexpr double sureInLong = 6;
// If a camera's sound is not like that of any recorder, each clip costs the reading of whole minutes, so stop
// after this many.
constexpr std::size_t mostWithoutResult = 3;
// At this length speech is missed in at most one of ten searches.
constexpr double leastUnheardSeconds = 14;
// From here on there is some match: music that repeats matches in many places, none of them clearly.
constexpr double leastAlike = 0.5;
// By how much another recording must be more like the camera's sound than the clip's own.
constexpr double clearlyMoreSimilar = 0.1;
// A lower likeness close to the expected place may come from a take that is similar to the right one, for
// example of the same song.
constexpr double surelyAlike = 0.85;
constexpr std::size_t listenersAtOnce = 4;
constexpr int mostRounds = 12; // enough to find the take from which on a clock is wrong among some thousands

/// The level of all channels together, for each window, without channels of linear timecode: its level is
/// constant and hides that of the microphones.
class Levels : public AudioListener {
  public:
    Levels(std::size_t channels, double sampleRate)
        : energies_(channels), means_(channels), timecode_(channels, LTCWordReader(sampleRate)),
          timecodeFrames_(wholeSamples(timecodeSeconds, sampleRate)) {}

    void samples(std::span<const float* const> channels, std::size_t frames) override {
        const std::size_t read = std::min(timecodeFrames_, frames);
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            timecode_[channel].hear({channels[channel], read});
            for (std::size_t i = 0; i < frames; ++i)
                energies_[channel] += double{channels[channel][i]} * double{channels[channel][i]};
        }
        timecodeFrames_ -= read;
        count_ += frames;
    }
    void windowEnded() override {
        for (std::size_t channel = 0; channel < means_.size(); ++channel) {
            means_[channel].push_back(count_ > 0 ? energies_[channel] / static_cast<double>(count_) : 0);
            energies_[channel] = 0;
        }
        count_ = 0;
    }

    std::vector<float> dB() {
        std::vector<double> sums;
        std::size_t channels = 0;
        for (std::size_t channel = 0; channel < means_.size(); ++channel) {
            timecode_[channel].finish();
            sums.resize(means_[channel].size());
            if (timecode_[channel].words().size() >= fewestWords) continue;
            ++channels;
            for (std::size_t i = 0; i < sums.size(); ++i) sums[i] += means_[channel][i];
        }
        constexpr double silence = 1e-12;
        std::vector<float> levels;
        levels.reserve(sums.size());
        for (const double sum : sums)
            levels.push_back(static_cast<float>(
                10 * std::log10(sum / static_cast<double>(std::max<std::size_t>(channels, 1)) + silence)));
        return levels;
    }

  private:
    static constexpr double timecodeSeconds = 1; // the beginning is enough: timecode does not pause
    static constexpr std::size_t fewestWords = 5;

    std::vector<double> energies_;           ///< of the present window, by channel
    std::vector<std::vector<double>> means_; ///< by channel, then by window
    std::vector<LTCWordReader> timecode_;
    std::size_t timecodeFrames_; ///< that are still to be searched for timecode
    std::size_t count_ = 0;
};

std::vector<float> levelsOf(platform::AudioFile* file, double from, double seconds,
                            const std::stop_token& stop) {
    if (file == nullptr || !(file->sampleRate() > 0) || file->channelCount() < 1) return {};
    const auto channels = static_cast<std::size_t>(std::min(file->channelCount(), mostChannels));
    Levels levels(channels, file->sampleRate());
    std::array<AudioListener*, 1> listeners{&levels};
    AudioPass{.firstFrame = static_cast<std::int64_t>(std::llround(from * file->sampleRate())),
              .channels = channels,
              .windowFrames = wholeSamples(1 / SoundPlace::binsPerSecond, file->sampleRate()),
              .windows = static_cast<std::size_t>(seconds * SoundPlace::binsPerSecond),
              .stop = stop}
        .run(*file, listeners);
    return levels.dB();
}

/// The result for one pair.
struct HeardPair {
    std::optional<HeardLag> lag;
    std::optional<HeardElsewhere> elsewhere;
    double likeness = 0;          ///< of `lag` or `elsewhere`
    bool isWithoutResult = false; ///< a wide search found nothing
    bool isUnheard = false;       ///< as in `HeardSound::unheard`
    bool isCompared = false;      ///< other recordings were searched although its own one was heard
};

/// The open files of a pair; those under the clip are opened once.
class Listening {
  public:
    Listening(const Pair& pair, std::stop_token stop)
        : pair_(pair), stop_(std::move(stop)), camera_(platform::AudioFile::openAllTracks(pair.camera.path)),
          take_(openTake(pair.recording)) {}

    /// `isFarToo`: search further than `SoundPlace::nearSeconds` from the expected place. `isCompared`:
    /// search other recordings if the clip's own is only similar.
    HeardPair hear(bool isFarToo, bool isCompared) const {
        if (!camera_ || !take_) return {};
        HeardPair result;
        const auto lag = lagAt(0, 0);
        if (!lag) return isFarToo ? withDrift(far()) : result;
        if (lag->likeness < surelyAlike && isCompared && !pair_.others.empty()) {
            result.isCompared = true;
            const auto own = head();
            const auto inOwn = own.empty() ? std::nullopt : inOwnTake(own);
            if (!own.empty()) findElsewhere(result, own, inOwn ? inOwn->likeness : lag->likeness);
            if (result.elsewhere) return result;
        }
        result.lag = HeardLag{lag->seconds};
        result.likeness = lag->likeness;
        return withDrift(std::move(result));
    }

  private:
    HeardPair withDrift(HeardPair result) const {
        if (!result.lag || pair_.lengthSeconds < leastForDriftSeconds) return result;
        const double tail = pair_.lengthSeconds - heardSeconds, atHead = result.lag->seconds;
        if (const auto atTail = lagAt(tail, atHead)) result.lag->drift = (atTail->seconds - atHead) / tail;
        return result;
    }
    /// The lag of the sound at that time of the clip, searched near the lag `around`.
    std::optional<SoundPlace::Near> lagAt(double seconds, double around) const {
        const auto own = levelsOf(camera_.get(), seconds, heardSeconds, stop_);
        if (static_cast<double>(own.size()) < leastHeardSeconds * SoundPlace::binsPerSecond)
            return std::nullopt;
        const double place = seconds - pair_.offsetSeconds - around;
        const double from = std::max(0.0, place - SoundPlace::nearSeconds);
        const double to = place + heardSeconds + SoundPlace::nearSeconds;
        if (to <= from) return std::nullopt;
        const auto other = levelsOf(take_.audio.get(), from, to - from, stop_);
        if (camera_->failedAt() || take_.audio->failedAt()) return std::nullopt;
        auto lag = SoundPlace::near(own, other, from - place);
        if (lag) lag->seconds += around;
        return lag;
    }
    /// The camera's sound for a search of whole minutes; empty if such a search is useless.
    std::vector<float> head() const {
        auto own = levelsOf(camera_.get(), 0, heardFarSeconds, stop_);
        if (static_cast<double>(own.size()) < leastHeardSeconds * SoundPlace::binsPerSecond ||
            camera_->failedAt() || SoundPlace::isSteady(own))
            own.clear();
        return own;
    }
    /// The clip time in the result is that of the recording's first sample.
    std::optional<SoundPlace::Found> inOwnTake(std::span<const float> own,
                                               double reach = furthestSeconds) const {
        const double from = std::max(0.0, -pair_.offsetSeconds - reach);
        auto found = placeIn(take_, own, from, reach - pair_.offsetSeconds - from);
        if (found) found->seconds -= from;
        return found;
    }
    double takeSeconds() const {
        return static_cast<double>(take_.audio->frameCount()) / take_.audio->sampleRate();
    }
    void findInLong(HeardPair& result, std::span<const float> own) const {
        const auto found = inOwnTake(own, furthestInLongSeconds);
        if (!found || !found->isPlain || found->score < sureInLong) return;
        result.lag = HeardLag{found->seconds - pair_.offsetSeconds};
        result.likeness = found->likeness;
    }
    /// Searches for a recording that is more like it than `likeness`.
    void findElsewhere(HeardPair& result, std::span<const float> own, double likeness) const {
        for (const OtherRecording& other : pair_.others) {
            const auto found = placeIn(openTake(other.recording), own, 0, rollsBeforeSeconds);
            if (!found || !found->isPlain || found->likeness <= likeness + clearlyMoreSimilar) continue;
            result.elsewhere =
                HeardElsewhere{other.recordingID, found->seconds - other.offsetSeconds, found->score};
            result.likeness = found->likeness;
            return;
        }
    }
    HeardPair far() const {
        HeardPair result;
        const auto own = head();
        if (own.empty()) return result;
        const auto inOwn = inOwnTake(own);
        if (inOwn && inOwn->isPlain) {
            result.lag = HeardLag{inOwn->seconds - pair_.offsetSeconds};
            result.likeness = inOwn->likeness;
        } else {
            findElsewhere(result, own, inOwn ? inOwn->likeness : 0);
            if (!result.elsewhere && takeSeconds() >= leastLongSeconds) findInLong(result, own);
        }
        result.isWithoutResult = !result.lag && !result.elsewhere;
        // A recording that begins late or ends early does not cover the head of the clip.
        const double heardTo = std::min(pair_.lengthSeconds, heardFarSeconds);
        result.isUnheard = result.isWithoutResult && inOwn && inOwn->likeness < leastAlike &&
                           SoundPlace::isLikeSpeech(own) && pair_.offsetSeconds <= 0 &&
                           heardTo >= leastUnheardSeconds && pair_.offsetSeconds + takeSeconds() >= heardTo;
        return result;
    }
    /// Searches the recording from the time `from` for a beginning within `seconds`. The clip time in the
    /// result is that of `from`.
    std::optional<SoundPlace::Found> placeIn(const OpenTake& take, std::span<const float> own, double from,
                                             double seconds) const {
        if (!take || seconds <= 0) return std::nullopt;
        const auto levels = levelsOf(take.audio.get(), from, seconds + heardFarSeconds, stop_);
        return take.audio->failedAt() ? std::nullopt : SoundPlace::anywhere(own, levels);
    }

    const Pair& pair_;
    const std::stop_token stop_;
    const std::unique_ptr<platform::AudioFile> camera_;
    const OpenTake take_;
};

/// A file of a take with the files that were recorded at the same time, by equal starts.
TakeSound soundBeside(const MediaAsset& recording, const std::vector<MediaAsset>& all) {
    TakeSound sound(recording.url);
    const auto folder = [](const MediaAsset& file) {
        return std::string_view(file.url.path).substr(0, file.url.path.rfind('/'));
    };
    sound.files.front().channelCount = std::max(recording.channelCount.value_or(1), 1);
    sound.files.front().durationSeconds = recording.durationSeconds.value_or(0);
    int channels = sound.files.front().channelCount;
    // Without a time, only the lengths of the files could be compared.
    if (recording.bextTimeReference.value_or(0) == 0 && !recording.startTimecodeString) return sound;
    for (const MediaAsset& other : all) {
        if (other.id == recording.id || channels >= mostChannels ||
            other.bextTimeReference != recording.bextTimeReference ||
            other.startTimecodeString != recording.startTimecodeString ||
            other.contentCreatedDate != recording.contentCreatedDate ||
            other.durationSeconds != recording.durationSeconds || folder(other) != folder(recording))
            continue;
        TakeSound::File file = sound.files.front();
        file.url = other.url;
        file.firstChannel = channels + 1;
        file.channelCount = std::max(other.channelCount.value_or(1), 1);
        channels += file.channelCount;
        sound.files.push_back(std::move(file));
    }
    return sound;
}

HeardClaim hearClaim(const SoundClaim& claim, const FileURL& video, const TakeSound& recording,
                     const std::stop_token& stop) {
    const auto camera = platform::AudioFile::openAllTracks(video.path);
    const OpenTake take = openTake(recording);
    if (!camera || !take) return {};
    auto own = levelsOf(camera.get(), 0, heardFarSeconds, stop);
    const double reach = claim.isClose ? SoundPlace::nearSeconds : claim.reachSeconds + furthestSeconds;
    const double from = std::max(0.0, -claim.offsetSeconds - reach);
    const double to = reach - claim.offsetSeconds + heardFarSeconds;
    if (to <= from) return {};
    const auto levels = levelsOf(take.audio.get(), from, to - from, stop);
    if (camera->failedAt() || take.audio->failedAt()) return {};
    if (claim.isClose) {
        const auto near = SoundPlace::near(own, levels, claim.offsetSeconds + from);
        if (!near || std::abs(near->seconds) > claim.reachSeconds) return {};
        return {claim.offsetSeconds + near->seconds, true};
    }
    // What is to be found has to be shorter than what it is looked for in.
    constexpr auto spare = static_cast<std::size_t>(SoundPlace::nearSeconds * SoundPlace::binsPerSecond);
    if (levels.size() < own.size() + spare) own.resize(levels.size() > spare ? levels.size() - spare : 0);
    const bool couldHear =
        static_cast<double>(own.size()) >= leastClaimedSeconds * SoundPlace::binsPerSecond &&
        !SoundPlace::isSteady(own);
    const auto found = own.empty() ? std::nullopt : SoundPlace::anywhere(own, levels);
    if (found && found->isPlain) return {found->seconds - from, true};
    return {std::nullopt, couldHear};
}

/// Whether at least three results of a card exist and all agree.
bool areAgreed(const std::vector<double>& found) {
    return found.size() >= fewestPairs &&
           std::ranges::max(found) - std::ranges::min(found) <= agreeingSeconds;
}

} // namespace

HeardSound heard(const std::vector<Pair>& pairs, const std::stop_token& stop,
                 const std::function<void(std::size_t done)>& progress) {
    HeardSound result;
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
    platform::concurrently(
        cards.size(), listenersAtOnce,
        [&](std::size_t card) {
            std::vector<double> lags, elsewhere;
            std::size_t drifts = 0, tried = 0, withoutResult = 0, comparedWithoutResult = 0;
            bool isFarFound = false;
            std::vector<std::pair<UUID, double>> likenesses; // likeness of the pairs that were heard in their
                                                             // own recordings
            double leastElsewhere = 0;
            for (const Pair& pair : cards[card]) {
                const bool isAgreed =
                    lags.empty() ? areAgreed(elsewhere) : elsewhere.empty() && areAgreed(lags);
                if (isAgreed && (drifts == 0 || drifts >= fewestPairs)) break;
                const HeardPair found = Listening(pair, stop)
                                            .hear(isFarFound || withoutResult < mostWithoutResult,
                                                  comparedWithoutResult < mostWithoutResult);
                ++tried;
                nowDone(1);
                withoutResult += found.isWithoutResult ? 1 : 0;
                comparedWithoutResult += found.isCompared && !found.elsewhere ? 1 : 0;
                const std::lock_guard lock(mutex);
                if (found.isUnheard) result.unheard.insert(pair.matchID);
                if (found.lag) {
                    lags.push_back(found.lag->seconds);
                    drifts += found.lag->drift ? 1 : 0;
                    isFarFound = isFarFound || std::abs(found.lag->seconds) > SoundPlace::nearSeconds;
                    result.lags.emplace(pair.matchID, *found.lag);
                    likenesses.emplace_back(pair.matchID, found.likeness);
                } else if (found.elsewhere) {
                    leastElsewhere =
                        elsewhere.empty() ? found.likeness : std::min(leastElsewhere, found.likeness);
                    elsewhere.push_back(found.elsewhere->seconds);
                    isFarFound = true;
                    result.elsewhere.emplace(pair.matchID, *found.elsewhere);
                }
            }
            // If others of the card are found elsewhere, a pair with a much lower likeness has a take that is
            // only similar to the right one.
            for (const auto& [match, likeness] : likenesses)
                if (likeness < leastElsewhere - clearlyMoreSimilar) {
                    const std::lock_guard lock(mutex);
                    result.lags.erase(match);
                }
            nowDone(cards[card].size() - tried);
        },
        stop);
    return result;
}

HeardSound heardEach(const std::vector<Pair>& pairs, const std::stop_token& stop,
                     const std::function<void(std::size_t done)>& progress) {
    HeardSound result;
    std::size_t done = 0;
    std::mutex mutex;
    platform::concurrently(
        pairs.size(), listenersAtOnce,
        [&](std::size_t i) {
            const HeardPair found = Listening(pairs[i], stop).hear(true, false);
            const std::lock_guard lock(mutex);
            if (found.lag) result.lags.emplace(pairs[i].matchID, *found.lag);
            if (progress) progress(++done);
        },
        stop);
    return result;
}

HeardSound heardWithNeighbours(const SyncGroupList& groups, std::vector<Pair> pairs,
                               const RecordingNeighbours& neighbours, const std::stop_token& stop,
                               const std::function<void(std::size_t done)>& progress) {
    neighbours.addTo(pairs);
    HeardSound result = heard(pairs, stop, progress);
    std::unordered_set<UUID> tried;
    for (int round = 0; round < mostRounds; ++round) {
        for (const Pair& pair : pairs) tried.insert(pair.matchID);
        pairs = pairsBetween(groups, result, tried);
        if (pairs.empty()) pairs = pairsToConfirm(groups, result, tried);
        if (pairs.empty()) break;
        neighbours.addTo(pairs);
        HeardSound more = heard(pairs, stop);
        result.lags.merge(more.lags);
        result.elsewhere.merge(more.elsewhere);
        result.unheard.merge(more.unheard);
    }
    return result;
}

HeardClaims heardClaims(const SyncGroupList& groups, const std::vector<MediaAsset>& recordings,
                        const std::vector<SoundClaim>& claims, const std::stop_token& stop) {
    std::unordered_map<UUID, const MediaAsset*> assets;
    for (const SyncGroup& group : groups) assets.emplace(group.id, &group.video);
    for (const MediaAsset& recording : recordings) assets.emplace(recording.id, &recording);
    HeardClaims result;
    std::mutex mutex;
    platform::concurrently(
        claims.size(), listenersAtOnce,
        [&](std::size_t i) {
            const SoundClaim& claim = claims[i];
            const auto video = assets.find(claim.clipID), recording = assets.find(claim.recordingID);
            if (video == assets.end() || recording == assets.end()) return;
            const HeardClaim heard =
                hearClaim(claim, video->second->url, soundBeside(*recording->second, recordings), stop);
            const std::lock_guard lock(mutex);
            result.emplace(claim.key(), heard);
        },
        stop);
    return result;
}

} // namespace orvane::SoundLag
