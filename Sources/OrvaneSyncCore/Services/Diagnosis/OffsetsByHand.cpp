#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

// Less is a nudge to the frame, or a camera's own delay.
constexpr double leastByHandSeconds = 0.2;
constexpr double agreeingSeconds = 0.1; // around the median: claps are set to a frame
constexpr double mostlyAgreeing = 0.8;  // of the clips that were moved

/// Clips of one camera folder with sound of one card.
struct HandledClips {
    std::vector<double> offsets; ///< of those that were moved by hand, seconds
    std::vector<double> heard;   ///< by the cameras' microphones, of those that were not
    std::vector<std::pair<const Shoot::Clip*, double>>
        places; ///< of these, where on the clip the sound began
    std::vector<const Shoot::Clip*> all;
    std::vector<const Shoot::Clip*> unmoved; ///< and not settled
    bool isConfirmed = false;                ///< somebody settled one where timecode laid it
};

/// What most of the offsets agree on, and how many do.
struct Agreement {
    double seconds;
    std::ptrdiff_t count;
};
std::optional<Agreement> agreementOf(std::vector<double> offsets, double least = leastByHandSeconds) {
    if (std::cmp_less(offsets.size(), explanation::fewest)) return std::nullopt;
    const auto middle = offsets.begin() + std::ssize(offsets) / 2;
    std::ranges::nth_element(offsets, middle);
    const double offset = *middle;
    const auto agreeing =
        std::ranges::count_if(offsets, [&](double own) { return std::abs(own - offset) <= agreeingSeconds; });
    if (agreeing < explanation::fewest ||
        static_cast<double>(agreeing) < mostlyAgreeing * static_cast<double>(offsets.size()) ||
        std::abs(offset) < least)
        return std::nullopt;
    return Agreement{offset, agreeing};
}

using CardPair = std::tuple<std::string_view, std::string_view, std::optional<long>>; ///< clips, sound, day

/// The mark that all first recordings of the clips have, and no other recorder's beside them. Whether nothing
/// else of the folder lies beside them, or such a mark parts the two.
bool findRecorder(Card& sound, const std::vector<const Shoot::Clip*>& clips) {
    std::vector<const MediaAsset*> own, others;
    for (const Shoot::Clip* clip : clips) {
        own.push_back(clip->group->primaryAudio());
        for (const TakeFile& file : takeOf(*clip->group, assumedChannels).files)
            if (const MediaAsset& other = *clip->group->audioMatches[file.matchIndex].audio;
                file.role == TakeRole::alternate && folderOf(other) == sound.folder)
                others.push_back(&other);
    }
    if (others.empty()) return true;
    for (const RecorderMark::By by : RecorderMark::all) {
        const RecorderMark mark = RecorderMark::of(*own.front(), by);
        const auto isOn = [&](const MediaAsset* file) { return mark.isOn(*file); };
        if (!std::ranges::all_of(own, isOn) || std::ranges::any_of(others, isOn)) continue;
        sound.recorder = mark;
        return true;
    }
    return false;
}

/// The rate at which labels have to be read so that one offset brings all sound where it was heard.
struct HeardRate {
    TimecodeFrameRate rate;
    Agreement offset; ///< of the recordings, to be added to what they state
};
std::optional<HeardRate> rateOf(const Shoot& shoot, const HandledClips& card) {
    for (const TimecodeFrameRate rate : ratesCountingAs(rateOfLabels(shoot))) {
        if (rate == shoot.input.rules.timecodeRate) continue;
        std::vector<double> offsets;
        for (const auto& [clip, place] : card.places) {
            const auto sound = AssetPlacement(*clip->group->primaryAudio(), rate).range();
            const auto picture = AssetPlacement(clip->group->video, rate).range();
            if (sound && picture)
                offsets.push_back(
                    std::remainder(place - (sound->startSeconds - picture->startSeconds), secondsADay));
        }
        if (const auto offset = agreementOf(std::move(offsets), 0)) return HeardRate{rate, *offset};
    }
    return std::nullopt;
}

} // namespace

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    static const std::unordered_map<UUID, HeardLag> none;
    const auto& heardLags = shoot.input.heardLags != nullptr ? *shoot.input.heardLags : none;
    std::map<CardPair, HandledClips> cards;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.primary || clip.group->isExcludedFromExport) continue;
        const Recording& sound = shoot.recordings[*clip.primary];
        HandledClips& card = cards[{folderOf(clip.group->video), folderOf(*sound.asset), sound.place.day}];
        card.all.push_back(&clip);
        if (std::abs(clip.group->manualAudioOffsetSeconds) >= leastByHandSeconds)
            card.offsets.push_back(clip.group->manualAudioOffsetSeconds);
        else if (clip.isDecided)
            card.isConfirmed = true;
        else
            card.unmoved.push_back(&clip);
        if (const auto lag = heardLags.find(clip.group->audioMatches.front().id);
            lag != heardLags.end() && clip.group->manualAudioOffsetSeconds == 0) {
            card.heard.push_back(lag->second.seconds);
            card.places.emplace_back(&clip, clip.group->audioMatches.front().syncOffsetSeconds +
                                                lag->second.seconds);
        }
    }
    const auto rate = rateOfLabels(shoot);
    const OffsetCure cure(shoot, rate);
    for (const auto& entry : cards) {
        const CardPair& key = entry.first;
        const HandledClips& card = entry.second;
        platform::throwIfStopped(shoot.stop);
        if (card.isConfirmed || card.unmoved.empty()) continue;
        const std::string folder = "'" + std::string(std::get<0>(key)) + "'";
        const auto moved = agreementOf(card.offsets);
        // Of sound that runs at another speed, the distance is that of one moment alone.
        if (!moved && doubts.has(card.unmoved.front()->group->id, {SyncDoubt::Kind::drift})) continue;
        const auto offset = moved ? moved : agreementOf(card.heard);
        std::optional<HeardRate> heardRate;
        if (!offset && !agreementOf(card.heard, 0)) heardRate = rateOf(shoot, card);
        if (!offset && !heardRate) continue;
        const std::string_view camera = std::get<0>(key), recorder = std::get<1>(key);
        const auto day = std::get<2>(key);
        Card sound{std::string(recorder), day, {}};
        const bool isAlone = std::ranges::none_of(cards, [&](const auto& other) {
            return other.first != key && std::get<1>(other.first) == recorder &&
                   std::get<2>(other.first) == day;
        });
        const bool isPart = !findRecorder(sound, card.all);
        const std::string scan =
            cure.inAScanOfRecordings(sound, isPart, isAlone ? std::string() : std::string(camera)) +
            "; lock a clip whose sound is right as it is" +
            (isPart ? std::string() : cure.forOtherSound(sound));
        if (heardRate) {
            const auto [least, most] = std::ranges::minmax(card.heard);
            const double total = heardRate->offset.seconds;
            const std::string option = "--tc-rate " + rateText(heardRate->rate);
            addCardDoubt(doubts,
                         {SyncDoubt::Kind::timecodeRate,
                          "the microphones of the cameras heard the sound of " +
                              counted(heardRate->offset.count, "clip", "clips") + " in " + folder +
                              formatted(" %.1f s", least) + formatted(" to %.1f s", most) +
                              " away from where '" + std::string(recorder) +
                              "' has it; with timecode that counts " + rateText(heardRate->rate) +
                              " frames a second, they all are " + spanText(std::abs(total)) +
                              (total < 0 ? " late" : " early"),
                          option + " --sound-offset " + offsetText(total, heardRate->rate) + scan},
                         card.unmoved);
            continue;
        }
        const std::string clips = counted(offset->count, "clip", "clips");
        const std::string span =
            spanText(std::abs(offset->seconds)) + (offset->seconds < 0 ? " earlier" : " later");
        addCardDoubt(doubts,
                     {SyncDoubt::Kind::constantOffset,
                      moved ? "the sound of " + clips + " in " + folder + " was moved " + span +
                                  " by hand, and that of the others, with recordings of the same card, was "
                                  "not: its clock may be wrong by that"
                            : "the microphones of the cameras heard the sound of " + clips + " in " + folder +
                                  " " + span + " than '" + std::string(recorder) +
                                  "' has it: the clock of that card is wrong by that, though each clip lies "
                                  "within its recording",
                      (moved ? "move the others by as much, or " : std::string()) + "--sound-offset " +
                          offsetText(offset->seconds + shoot.input.rules.soundOffsetSeconds, rate) + scan},
                     card.unmoved);
    }
}

} // namespace orvane
