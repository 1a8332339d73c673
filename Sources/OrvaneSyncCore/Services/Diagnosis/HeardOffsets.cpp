#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClockDrift.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/MovedParts.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;
using HeardCards = std::map<CameraAndCard, HandledClips>;

// Two sounds that are completely found in other recordings, at one distance, are no coincidence.
constexpr std::ptrdiff_t fewestElsewhere = 2;
// A single one is reported if its score is above the highest that hundreds of unrelated searches gave.
constexpr double sureScore = 6;

/// The rate at which labels must be read so that one offset moves all sound to where it was heard.
struct HeardRate {
    TimecodeFrameRate rate;
    Agreement offset; ///< of the recordings, to be added to the starts that they state
};
/// The rates that count like the one at which the labels are read, and the rate that the clips state if no
/// label of the recordings is read.
std::vector<TimecodeFrameRate> ratesToTry(const Shoot& shoot, const HandledClips& card) {
    std::vector<TimecodeFrameRate> rates = ratesCountingAs(rateOfLabels(shoot));
    const TimecodeFrameRate stated = labelRate(card.places.front().first->group->video);
    if (std::ranges::find(rates, stated) == rates.end() &&
        std::ranges::all_of(card.places, [&](const auto& place) {
            const Shoot::Clip& clip = *place.first;
            return labelRate(clip.group->video) == stated && shoot.recordings[*clip.primary].isCounted;
        }))
        rates.push_back(stated);
    std::erase(rates, shoot.input.rules.timecodeRate);
    return rates;
}
/// Clip time at which the first recording begins if labels are read at that rate.
std::optional<double> startAt(const SyncGroup& group, TimecodeFrameRate rate) {
    const auto sound = AssetPlacement(*group.primaryAudio(), rate).range();
    const auto picture = AssetPlacement(group.video, rate).range();
    return sound && picture ? std::optional(sound->startSeconds - picture->startSeconds) : std::nullopt;
}
/// The rate at which the offsets agree best; absent if they agree at the current rate.
std::optional<HeardRate> rateOf(const Shoot& shoot, const HandledClips& card) {
    std::optional<HeardRate> best;
    if (std::cmp_less(card.places.size(), explanation::fewest) ||
        agreementOf(card.heard, explanation::fewest, 0))
        return best;
    double narrowest = std::numeric_limits<double>::infinity();
    for (const TimecodeFrameRate rate : ratesToTry(shoot, card)) {
        std::vector<double> offsets;
        for (const auto& [clip, place] : card.places) {
            if (const auto start = startAt(*clip->group, rate))
                offsets.push_back(std::remainder(place - *start, secondsADay));
        }
        const auto offset = agreementOf(offsets, explanation::fewest, 0);
        if (!offset) continue;
        const auto [first, last] = std::ranges::minmax(offsets);
        if (last - first >= narrowest) continue;
        narrowest = last - first;
        best = HeardRate{rate, *offset};
    }
    return best;
}

/// A camera, and what its microphone shows about one card of recordings.
struct Camera {
    const CameraAndCard* key;
    const HandledClips* clips;
    std::optional<Agreement> offset = {}; ///< the error of the card's clock
    bool isElsewhere = false;             ///< heard in other recordings than those under the clips
    bool hasNoSound() const { return clips->heard.empty() && clips->elsewhere.empty(); }
};

/// Whether a move of a clip's sound moves one recording only.
bool haveOneRecording(const std::vector<const Shoot::Clip*>& clips) {
    return std::ranges::all_of(
        clips, [](const Shoot::Clip* clip) { return recordingsOf(*clip->group).size() == 1; });
}

std::string quotedFolder(std::string_view folder) { return "'" + std::string(folder) + "'"; }

class HeardOffsets {
  public:
    HeardOffsets(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), rate_(rateOfLabels(shoot)), cure_(shoot, rate_),
          cards_(handledClips(shoot)) {}

    void add() {
        std::map<std::pair<std::string_view, std::optional<long>>, std::vector<Camera>> recorders;
        for (const auto& [key, card] : cards_) {
            platform::throwIfStopped(shoot_.stop);
            if (addDrift(key, card) || addParts(key, card)) continue;
            if (card.isConfirmed || card.unmoved.empty() || agreementOf(card.offsets, explanation::fewest))
                continue;
            recorders[{std::get<1>(key), std::get<2>(key)}].push_back(cameraOf(key, card));
        }
        for (const auto& [recorder, cameras] : recorders) addOffsets(cameras);
    }

  private:
    Camera cameraOf(const CameraAndCard& key, const HandledClips& card) const {
        Camera camera{&key, &card};
        // If sound runs at another speed, the distance is only valid at one moment.
        if (doubts_.has(card.unmoved.front()->group->id, {Kind::drift})) return camera;
        if (card.elsewhere.empty()) {
            camera.offset = agreementOf(card.heard, explanation::fewest);
        } else if (card.heard.empty()) {
            std::vector<double> offsets;
            for (const auto& [clip, other] : card.elsewhere) offsets.push_back(other.seconds);
            camera.offset = agreementOf(std::move(offsets), fewestElsewhere);
            camera.isElsewhere = camera.offset.has_value();
        }
        return camera;
    }

    /// The smallest difference that counts, in seconds.
    double leastFrame(const Camera& camera) const {
        constexpr double nearlyAFrame = 0.9;
        const double fps = clipRate(camera.clips->all.front()->group->video,
                                    timecodeRate::frameRateForRealTimeCalculation(rate_));
        return std::max(agreedLag::leastSeconds, nearlyAFrame / fps);
    }

    /// For all cameras with sound of one card: cameras that heard it at one distance share a doubt. Cameras
    /// that could not hear it are included if no other camera contradicts.
    void addOffsets(const std::vector<Camera>& cameras) {
        std::vector<std::vector<Camera>> together;
        for (const Camera& camera : cameras) {
            if (!camera.offset) {
                addRate(camera);
                addEachElsewhere(*camera.clips);
                addSmallOffset(camera);
                continue;
            }
            const auto same = std::ranges::find_if(together, [&](const auto& others) {
                return others.front().isElsewhere == camera.isElsewhere &&
                       std::abs(others.front().offset->seconds - camera.offset->seconds) <=
                           agreeingByHandSeconds;
            });
            if (same != together.end())
                same->push_back(camera);
            else
                together.push_back({camera});
        }
        const bool areAgreed = together.size() == 1 && std::ranges::all_of(cameras, [](const Camera& camera) {
                                   return camera.offset || camera.hasNoSound();
                               });
        for (const auto& those : together) {
            if (areAgreed)
                addOffset(those, cameras, true);
            else
                for (const auto& part : ownClocks(those)) addOffset(part, part, false);
        }
    }
    /// Cameras whose clocks differ by a frame and more, each agreeing closely on a lag of its own, apart:
    /// where another camera shows that the recorder's clock is right, each of them has its own error.
    std::vector<std::vector<Camera>> ownClocks(const std::vector<Camera>& cameras) const {
        std::vector<std::vector<Camera>> parts;
        const auto lagOf = [](const Camera& camera) {
            return agreedLag::of(camera.clips->heard, agreedLag::fewestComparedClips);
        };
        for (const Camera& camera : cameras) {
            const auto own = lagOf(camera);
            const auto same = std::ranges::find_if(parts, [&](const std::vector<Camera>& others) {
                const auto other = lagOf(others.front());
                return !own || !other || std::abs(*own - *other) < leastFrame(camera);
            });
            if (same != parts.end())
                same->push_back(camera);
            else
                parts.push_back({camera});
        }
        return parts;
    }

    /// `heard`: the cameras that agree on it. `all`: the cameras that the doubt is about. `areAgreed`: no
    /// other camera with sound of the card heard it at another distance.
    void addOffset(const std::vector<Camera>& heard, const std::vector<Camera>& all, bool areAgreed) {
        const HeardClock clock = heardClock(heard.front().offset->seconds, rate_);
        const double offset = clock.seconds;
        std::ptrdiff_t count = 0;
        std::vector<std::string> folders, withoutSound;
        for (const Camera& camera : heard) {
            count += camera.offset->count;
            folders.push_back(quotedFolder(std::get<0>(*camera.key)));
        }
        std::vector<const Shoot::Clip*> unmoved;
        for (const Camera& camera : all) {
            if (camera.hasNoSound()) withoutSound.push_back(quotedFolder(std::get<0>(*camera.key)));
            unmoved.insert(unmoved.end(), camera.clips->unmoved.begin(), camera.clips->unmoved.end());
        }
        std::ranges::sort(unmoved); // in the order of the clips
        const std::string in =
            counted(count, "clip", "clips") + " in " + platform::text::joined(folders, ", ");
        const std::string recorder = quotedFolder(std::get<1>(*heard.front().key));
        const std::string span =
            offsetSpanText(std::abs(offset), rate_) + (offset < 0 ? " earlier" : " later");
        std::string text =
            heard.front().isElsewhere
                ? "the microphones of the cameras heard other sound in " + in + " than " + recorder +
                      " has under them: that of other recordings of that card, " + span +
                      " than it has them: its clock is wrong by that"
                : "the microphones of the cameras heard the sound of " + in + " " + span + " than " +
                      recorder +
                      " has it: the clock of that card is wrong by that, though each clip lies within its "
                      "recording";
        if (!withoutSound.empty())
            text += "; that of the clips in " + platform::text::joined(withoutSound, ", ") +
                    " comes from the same recorder and could not be heard";
        SyncDoubt doubt{.kind = Kind::constantOffset, .message = std::move(text), .cure = {}};
        const std::string_view folder = std::get<1>(*heard.front().key);
        const bool isTable = !heard.front().isElsewhere && haveNoOtherSound(shoot_, unmoved, folder);
        std::vector<const Shoot::Clip*> alone; // that have one recording, beside clips that have others
        if (!areAgreed && isTable) {
            doubt.cure = cureWords::moveAsHeard() + (clock.isExact ? "" : checkAClap) +
                         "; lock a clip whose sound is right as it is";
            doubt.suggestion = SyncDoubt::Suggestion{.offsetSeconds = offset};
        } else {
            doubt.cure = forCameras({offsetBy(offset, all)}, all, clock.isExact);
            // Options that are for some of the files leave the other clips to a second document.
            if (isTable && cureWords::isForSome(doubt.cure) && haveOneRecording(unmoved)) {
                doubt.cure += "; in one document, " + cureWords::moveAsHeard();
                doubt.suggestion = SyncDoubt::Suggestion{.offsetSeconds = offset};
            } else if (!heard.front().isElsewhere && !isTable && cureWords::isForSome(doubt.cure)) {
                std::ranges::copy_if(unmoved, std::back_inserter(alone), [&](const Shoot::Clip* clip) {
                    return haveNoOtherSound(shoot_, {clip}, folder) && haveOneRecording({clip});
                });
                if (!alone.empty())
                    doubt.cure += "; in one document, " +
                                  cureWords::asHeard("move their sound by that where there is no other",
                                                     "'choice' and 'offset_frames'");
            }
        }
        for (const Recording& recording : shoot_.recordings)
            if (shoot_.recorderOf(*recording.asset) == folder &&
                recording.place.day == std::get<2>(*heard.front().key))
                doubts_.recordings.insert(recording.asset->id);
        addCardDoubt(doubts_, std::move(doubt), unmoved);
        for (const Shoot::Clip* clip : alone)
            doubts_.byGroup[clip->group->id].back().suggestion =
                SyncDoubt::Suggestion{.offsetSeconds = offset};
    }
    /// The lag of the cameras that a lag of this camera can be compared with: those heard in place, else all
    /// others if several agree. Adds their folders. Microphones are late by a delay of their own, which this
    /// includes.
    std::optional<double> lagOfOthers(const CameraAndCard& key, double least,
                                      std::vector<std::string>& folders) const {
        std::vector<std::pair<double, std::string>> others, inPlace;
        for (const auto& [other, card] : cards_) {
            if (other == key || std::get<1>(other) != std::get<1>(key) ||
                std::get<2>(other) != std::get<2>(key) || !card.elsewhere.empty())
                continue;
            const auto lag = agreedLag::of(card.heard, agreedLag::fewestComparedClips);
            if (!lag) continue;
            others.emplace_back(*lag, quotedFolder(std::get<0>(other)));
            if (std::abs(*lag) < least) inPlace.push_back(others.back());
        }
        auto& compared = inPlace.empty() ? others : inPlace;
        if (compared.empty() || (inPlace.empty() && compared.size() < 2)) return std::nullopt;
        std::ranges::sort(compared);
        if (compared.back().first - compared.front().first >= least) return std::nullopt;
        for (const auto& [lag, folder] : compared) folders.push_back(folder);
        return compared[compared.size() / 2].first;
    }
    /// For a camera whose clips are in place for everything else, but off by the same few frames, which other
    /// cameras with sound of the same card are not. Without such a camera, the lag alone has to be larger.
    void addSmallOffset(const Camera& camera) {
        const HandledClips& card = *camera.clips;
        const MediaAsset& video = card.unmoved.front()->group->video;
        if (!card.elsewhere.empty() || doubts_.has(card.unmoved.front()->group->id, {Kind::drift})) return;
        const auto own = agreedLag::of(card.heard, agreedLag::fewestClips);
        const double fps = clipRate(video, timecodeRate::frameRateForRealTimeCalculation(rate_));
        const double least = leastFrame(camera);
        if (!own || std::abs(*own) < least || std::abs(*own) >= inPlaceSeconds) return;
        std::vector<std::string> folders;
        auto reference = lagOfOthers(*camera.key, least, folders);
        if (reference && (std::abs(*own - *reference) < least || std::abs(*own) < std::abs(*reference)))
            reference.reset();
        if (!reference && std::abs(*own) < agreedLag::leastAloneSeconds) return;
        // Clocks are set by whole frames, so a measurement near one means that one.
        constexpr double nearFrames = 0.3;
        double offset = *own - reference.value_or(microphoneDelaySeconds);
        if (const double whole = std::round(offset * fps); std::abs(offset * fps - whole) <= nearFrames)
            offset = whole / fps;
        std::vector<const Shoot::Clip*> clips;
        std::ranges::copy_if(card.unmoved, std::back_inserter(clips), [](const Shoot::Clip* clip) {
            return clip->group->manualAudioOffsetSeconds == 0;
        });
        constexpr double soundMetresASecond = 343;
        const std::string folder = quotedFolder(std::get<0>(*camera.key));
        const std::string recorder = quotedFolder(std::get<1>(*camera.key));
        const std::string those = "the microphones of the cameras heard the sound of " +
                                  counted(std::ssize(card.heard), "clip", "clips") + " in " + folder;
        const std::string by =
            (offset < 0 ? " earlier by " : " later by ") + framesText(std::abs(offset), video);
        const bool isLate = offset > 0;
        const std::string metres = formatted("%.0f m", offset * soundMetresASecond);
        SyncDoubt doubt{
            .kind = Kind::constantOffset,
            .message =
                reference
                    ? those + by + " against " + recorder + " than that of the clips in " +
                          platform::text::joined(folders, ", ") +
                          ": the clock of this camera is wrong by that" +
                          (isLate ? ", or its microphone was " + metres + " further away" : "")
                    : those + by + " than " + recorder +
                          " has it, in each of them, and no other camera shows which clock is wrong: that of "
                          "this camera or that of the recordings" +
                          (isLate ? ", or none, if the microphone was " + metres + " away" : ""),
            .cure = "check a clap; if it shows the same, "};
        const DoubtCure alone = forCameras({offsetBy(offset, {camera})}, {camera});
        if (haveNoOtherSound(shoot_, clips, std::get<1>(*camera.key))) {
            doubt.cure += cureWords::moveAsHeard() + ", or " + alone;
            doubt.suggestion = SyncDoubt::Suggestion{.offsetSeconds = offset};
        } else {
            doubt.cure += alone;
        }
        addCardDoubt(doubts_, std::move(doubt), clips);
    }
    /// Distances that grow with the time of day show a wrong rate.
    void addRate(const Camera& camera) {
        const HandledClips& card = *camera.clips;
        if (doubts_.has(card.unmoved.front()->group->id, {Kind::drift})) return;
        const auto heardRate = rateOf(shoot_, card);
        if (!heardRate) return;
        const auto [least, most] = std::ranges::minmax(card.heard);
        const double total = heardRate->offset.seconds;
        const std::string text = rateText(heardRate->rate);
        DoubtCure cure = forCameras({{CureOption::Kind::timecodeRate, text},
                                     {CureOption::Kind::soundOffset, offsetText(total, heardRate->rate)}},
                                    {camera});
        const bool isTable = cureWords::isForSome(cure) && haveOneRecording(card.unmoved) &&
                             haveNoOtherSound(shoot_, card.unmoved, std::get<1>(*camera.key));
        if (isTable)
            cure += "; in one document, " +
                    cureWords::asHeard("move the sound of each clip by its own distance", "'offset_frames'");
        addCardDoubt(doubts_,
                     {Kind::timecodeRate,
                      "the microphones of the cameras heard the sound of " +
                          counted(heardRate->offset.count, "clip", "clips") + " in " +
                          quotedFolder(std::get<0>(*camera.key)) + formatted(" %.1f s", least) +
                          formatted(" to %.1f s", most) + " away from where " +
                          quotedFolder(std::get<1>(*camera.key)) + " has it; with timecode that counts " +
                          text + " frames a second, they all are " +
                          offsetSpanText(std::abs(total), heardRate->rate) + (total < 0 ? " late" : " early"),
                      std::move(cure)},
                     card.unmoved);
        for (const Shoot::Clip* clip : card.unmoved)
            if (const auto start = startAt(*clip->group, heardRate->rate); isTable && start) {
                const double present = clip->group->audioMatches.front().syncOffsetSeconds;
                doubts_.byGroup[clip->group->id].back().suggestion = SyncDoubt::Suggestion{
                    .offsetSeconds =
                        std::remainder(*start + total - present, secondsADay) - microphoneDelaySeconds};
            }
    }
    /// Adds the folders of cameras without sound: their clips may belong to the card.
    void addCamerasWithoutSound(std::set<std::string_view>& folders) const {
        for (const Shoot::Clip& clip : shoot_.clips) {
            const std::string_view folder = folderOf(clip.group->video);
            if (std::ranges::none_of(cards_,
                                     [&](const auto& card) { return std::get<0>(card.first) == folder; }))
                folders.insert(folder);
        }
    }
    /// The folders of clips for a scan of these cameras' clips alone: other clips would lose their own sound,
    /// or get this one. Empty if there are no other cameras.
    std::set<std::string_view> foldersOf(const std::vector<Camera>& cameras) const {
        std::set<std::string_view> folders;
        for (const Camera& one : cameras) folders.insert(std::get<0>(*one.key));
        if (std::ranges::all_of(
                cards_, [&](const auto& other) { return folders.contains(std::get<0>(other.first)); }))
            return {};
        addCamerasWithoutSound(folders);
        return folders;
    }
    /// For a scan of these cameras' clips: their rate may be another one than that of most clips.
    CureOption offsetBy(double seconds, const std::vector<Camera>& cameras) const {
        const auto folders = foldersOf(cameras);
        std::vector<MediaAsset> videos;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (folders.contains(folderOf(clip.group->video))) videos.push_back(clip.group->video);
        const TimecodeFrameRate rate =
            videos.empty() ? rate_ : shoot_.input.rules.timecodeRate.value_or(rateOfMostClips(videos));
        return {CureOption::Kind::soundOffset,
                offsetText(seconds + shoot_.input.rules.soundOffsetSeconds, rate)};
    }
    /// The options in a scan that moves the card's sound only under the clips of these cameras.
    DoubtCure forCameras(std::vector<CureOption> options, const std::vector<Camera>& cameras,
                         bool isExact = true) const {
        const auto& [camera, recorder, day] = *cameras.front().key;
        Card sound{std::string(recorder), day, {}};
        std::vector<const Shoot::Clip*> clips;
        for (const Camera& one : cameras)
            clips.insert(clips.end(), one.clips->all.begin(), one.clips->all.end());
        const bool isPart = !findRecorder(shoot_, sound, clips);
        return DoubtCure(CureWay{std::move(options)})
                   .in(cure_.scanOfRecordings(sound, isPart, foldersOf(cameras))) +
               (isExact ? "" : checkAClap) + "; lock a clip whose sound is right as it is" +
               (isPart ? std::string() : cure_.forOtherSound(sound));
    }

    /// For cameras that do not agree.
    void addEachElsewhere(const HandledClips& card) {
        for (const auto& [clip, other] : card.elsewhere) {
            if (other.score < sureScore || doubts_.has(clip->group->id, {Kind::constantOffset})) continue;
            const MediaAsset& sound = *shoot_.recordings[shoot_.recordingByID.at(other.recordingID)].asset;
            const std::string name = shoot_.nameOf(sound);
            doubts_.byGroup[clip->group->id].push_back(
                {Kind::ambiguous,
                 "the microphone of the camera heard the sound of " + name + " in " +
                     shoot_.nameOf(clip->group->video) + ", and not that of " +
                     shoot_.nameOf(*clip->group->primaryAudio()) +
                     ", which lies under it; it would have to lie " + spanText(std::abs(other.seconds)) +
                     (other.seconds < 0 ? " earlier" : " later") + " than its timecode says",
                 cureWords::choose(name) + " and move it by that, or lock the clip"});
        }
    }

    bool addDrift(const CameraAndCard& key, const HandledClips& card) {
        if (card.isConfirmed || card.unmoved.empty() || rateOf(shoot_, card) ||
            doubts_.has(card.unmoved.front()->group->id, {Kind::drift}))
            return false;
        const auto isOfRecorder = [&](const auto& other) {
            return std::get<1>(other.first) == std::get<1>(key) &&
                   std::get<2>(other.first) == std::get<2>(key);
        };
        const auto isOfOther = [&](const auto& other) { return other.first != key && isOfRecorder(other); };
        // If the offsets of several cards fit one drift, it is that of the recorder's clock.
        HandledClips heard;
        std::size_t cards = 0;
        for (const auto& other : cards_) {
            if (!isOfRecorder(other) || other.second.soundings().empty()) continue;
            ++cards;
            heard.places.insert(heard.places.end(), other.second.places.begin(), other.second.places.end());
            heard.elsewhere.insert(heard.elsewhere.end(), other.second.elsewhere.begin(),
                                   other.second.elsewhere.end());
        }
        if (cards > 1 && rateOf(shoot_, heard)) return false;
        if (const auto common = clockDriftOf(heard); common && cards > 1 && !card.soundings().empty()) {
            addClockDrift(shoot_, key, card, *common, doubts_);
            for (const auto& other : cards_)
                if (isOfOther(other) && other.second.soundings().empty() && !other.second.isConfirmed)
                    addClockDriftUnheard(shoot_, key, other.second, *common, doubts_);
            return true;
        }
        const auto drift = clockDriftOf(card);
        if (!drift) return false;
        addClockDrift(shoot_, key, card, *drift, doubts_);
        // If another camera heard the recorder at another distance, the first camera's clock is wrong.
        const bool isContradicted = std::ranges::any_of(cards_, [&](const auto& other) {
            return isOfOther(other) && !other.second.soundings().empty() && !clockDriftOf(other.second);
        });
        if (isContradicted) return true;
        for (const auto& other : cards_)
            if (isOfOther(other) && other.second.soundings().empty() && !other.second.isConfirmed)
                addClockDriftUnheard(shoot_, key, other.second, *drift, doubts_);
        return true;
    }

    bool addParts(const CameraAndCard& key, const HandledClips& card) {
        const auto isDrifting = [&] {
            return doubts_.has(card.all.front()->group->id, {Kind::drift}) || rateOf(shoot_, card);
        };
        const auto parts = movedParts(shoot_, card);
        if (parts.empty() || isDrifting()) return false;
        for (const MovedPart& part : parts) addMovedPart(shoot_, cards_, key, part, doubts_);
        return true;
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
    OffsetCure cure_;
    HeardCards cards_;
};

} // namespace

void addHeardOffsets(const Shoot& shoot, SyncDoubts& doubts) { HeardOffsets(shoot, doubts).add(); }

} // namespace orvane
