#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace orvane {

using platform::text::formatted;

std::map<CameraAndCard, HandledClips> handledClips(const Shoot& shoot) {
    const auto foundIn = [](const auto* heard, const UUID& match) {
        const auto found = heard != nullptr ? heard->find(match) : decltype(heard->end()){};
        return heard != nullptr && found != heard->end() ? &found->second : nullptr;
    };
    std::map<CameraAndCard, HandledClips> cards;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.primary || clip.group->isExcludedFromExport) continue;
        const Recording& sound = shoot.recordings[*clip.primary];
        HandledClips& card =
            cards[{folderOf(clip.group->video), shoot.recorderOf(*sound.asset), sound.place.day}];
        card.all.push_back(&clip);
        const double byHand = clip.group->manualAudioOffsetSeconds;
        if (std::abs(byHand) >= leastByHandSeconds)
            card.offsets.push_back(byHand);
        else if (clip.isDecided)
            card.isConfirmed = true;
        else
            card.unmoved.push_back(&clip);
        if (byHand != 0) continue;
        const AudioMatch& match = clip.group->audioMatches.front();
        if (const HeardLag* lag = foundIn(shoot.input.heardLags, match.id)) {
            card.heard.push_back(lag->seconds);
            card.places.emplace_back(&clip, match.syncOffsetSeconds + lag->seconds);
        }
        const HeardElsewhere* other = foundIn(shoot.input.heardElsewhere, match.id);
        if (other != nullptr && !clip.isDecided && shoot.recordingByID.contains(other->recordingID))
            card.elsewhere.emplace_back(&clip, *other);
    }
    return cards;
}

std::vector<HandledClips::Sounding> HandledClips::soundings() const {
    std::vector<Sounding> result;
    for (const auto& [clip, place] : places)
        result.push_back({clip, place - clip->group->audioMatches.front().syncOffsetSeconds, false});
    for (const auto& [clip, other] : elsewhere) result.push_back({clip, other.seconds, true});
    std::ranges::sort(result, {}, &Sounding::clip);
    return result;
}

std::optional<Agreement> agreementOf(std::vector<double> offsets, std::ptrdiff_t fewest, double least) {
    constexpr double mostly = 0.8;
    if (std::ssize(offsets) < fewest) return std::nullopt;
    const auto middle = offsets.begin() + std::ssize(offsets) / 2;
    std::ranges::nth_element(offsets, middle);
    const double offset = *middle;
    const auto agreeing = std::ranges::count_if(
        offsets, [&](double own) { return std::abs(own - offset) <= agreeingByHandSeconds; });
    if (agreeing < fewest || static_cast<double>(agreeing) < mostly * static_cast<double>(offsets.size()) ||
        std::abs(offset) < least)
        return std::nullopt;
    return Agreement{offset, agreeing};
}

HeardClock heardClock(double seconds, TimecodeFrameRate rate) {
    const double heard = seconds - microphoneDelaySeconds;
    const double whole = std::round(heard);
    // Labels of 23.976 count 1000 s in 1001 s, and some clocks are set by such labels.
    constexpr double manyLabels = 1000;
    const double secondsALabel = labelSeconds(manyLabels, rate) / manyLabels;
    const double labels = std::round(heard / secondsALabel) * secondsALabel;
    const double round = std::abs(labels - heard) < std::abs(whole - heard) ? labels : whole;
    if (whole == 0 || seconds < round - mostAheadSeconds || seconds > round + mostBehindSeconds)
        return {heard, false};
    return {round, std::abs(heard - round) * timecodeRate::frameRateForRealTimeCalculation(rate) <= 1};
}

bool haveNoOtherSound(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips,
                      std::string_view recorder) {
    return std::ranges::all_of(clips, [&](const Shoot::Clip* clip) {
        return std::ranges::all_of(clip->group->audioMatches, [&](const AudioMatch& match) {
            return shoot.recorderOf(*match.audio) == recorder;
        });
    });
}

bool areOfTwoRecorders(const std::vector<const Shoot::Clip*>& clips,
                       const std::vector<const Shoot::Clip*>& others) {
    return !clips.empty() && std::ranges::any_of(RecorderMark::all, [&](RecorderMark::By by) {
        const RecorderMark mark = RecorderMark::of(*clips.front()->group->primaryAudio(), by);
        const auto isOn = [&](const Shoot::Clip* clip) { return mark.isOn(*clip->group->primaryAudio()); };
        return !mark.value.empty() && std::ranges::all_of(clips, isOn) && std::ranges::none_of(others, isOn);
    });
}

bool findRecorder(const Shoot& shoot, Card& sound, const std::vector<const Shoot::Clip*>& clips) {
    std::vector<const MediaAsset*> own, others;
    for (const Shoot::Clip* clip : clips) {
        own.push_back(clip->group->primaryAudio());
        for (const TakeFile& file : takeOf(*clip->group, assumedChannels).files)
            if (const MediaAsset& other = *clip->group->audioMatches[file.matchIndex].audio;
                file.role == TakeRole::alternate && shoot.recorderOf(other) == sound.folder)
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

} // namespace orvane
