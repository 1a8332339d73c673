#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/RateText.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

constexpr int fewestToBeHeard = 2; // one clip may sound similar by chance

bool namesTrimMode(const DoubtCure& cure) {
    return std::ranges::any_of(cure.parts(), [](const DoubtCure::Part& part) {
        const auto* way = std::get_if<CureWay>(&part);
        return way != nullptr && std::ranges::any_of(way->options, [](const CureOption& option) {
                   return option.kind == CureOption::Kind::setting;
               });
    });
}

bool isSolvedByOptions(const SyncDoubt& doubt) {
    return doubt.kind == Kind::constantOffset && doubt.cure.firstWay() != nullptr;
}

bool isOfAnotherRecording(const SyncDoubt& doubt, const SyncGroup& group) {
    const MediaAsset* own = group.primaryAudio();
    return doubt.suggestion && doubt.suggestion->recordingID && own != nullptr &&
           own->id != *doubt.suggestion->recordingID;
}

/// With a wrong clock or date, clips may have the sound of other takes. Its length says nothing then, the
/// picture must not be cut to it, and the date of a take that lies there by chance says nothing either.
void settleClocksFirst(const Shoot& shoot, SyncDoubts& doubts) {
    for (const Shoot::Clip& clip : shoot.clips) {
        const auto found = doubts.byGroup.find(clip.group->id);
        if (found == doubts.byGroup.end()) continue;
        std::vector<SyncDoubt>& own = found->second;
        const bool isClockInDoubt =
            doubts.has(clip.group->id, {Kind::constantOffset, Kind::timecodeRate, Kind::notTimeOfDay});
        if (!isClockInDoubt && !doubts.has(clip.group->id, {Kind::otherDay}) &&
            std::ranges::none_of(own,
                                 [&](const auto& doubt) { return isOfAnotherRecording(doubt, *clip.group); }))
            continue;
        std::erase_if(own, [](const SyncDoubt& doubt) {
            return (doubt.kind == Kind::shortSound || doubt.kind == Kind::cutByTrim) &&
                   namesTrimMode(doubt.cure);
        });
        if (!isClockInDoubt) continue;
        const bool isSolved = std::ranges::any_of(own, isSolvedByOptions);
        const auto isOfACard = [&](const SyncDoubt& doubt) {
            return std::ranges::any_of(doubts.cards,
                                       [&](const CardDoubt& card) { return card.doubt == doubt; });
        };
        for (SyncDoubt& doubt : own)
            if (isSolved && doubt.kind == Kind::otherDay && !isOfACard(doubt))
                doubt.cure = "settle the doubt about its clock first";
    }
}

/// Adds to what the terminal shows of the doubt.
void addToMessage(CardDoubt& card, SyncDoubts& doubts, const std::string& words) {
    SyncDoubt told = card.doubt;
    if (told.windowMessage.empty()) told.windowMessage = told.message;
    told.message += "; " + words;
    for (const UUID& id : card.groupIDs)
        if (const auto own = doubts.byGroup.find(id); own != doubts.byGroup.end())
            std::ranges::replace(own->second, card.doubt, told);
    card.doubt = std::move(told);
}

/// If only timecode shows that a clock is wrong, adds to the message that clips were too short to be
/// measured.
void nameClipsTooShortToHear(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardClaims == nullptr) return;
    std::unordered_map<UUID, const Shoot::Clip*> clips;
    for (const Shoot::Clip& clip : shoot.clips) clips.emplace(clip.group->id, &clip);
    for (CardDoubt& card : doubts.cards) {
        if (card.doubt.kind != Kind::constantOffset ||
            card.doubt.message.find("microphones") != std::string::npos)
            continue;
        int audible = 0, tooShort = 0;
        for (const UUID& id : card.groupIDs) {
            const Shoot::Clip& clip = *clips.at(id);
            const MediaAsset& video = clip.group->video;
            if (isAudible(clip))
                ++audible;
            else if (video.channelCount.value_or(0) > 0 &&
                     video.durationSeconds.value_or(0) < leastClaimedSeconds)
                ++tooShort;
        }
        if (audible >= fewestToBeHeard || tooShort == 0) continue;
        addToMessage(card, doubts,
                     counted(tooShort, "clip was", "clips were") +
                         " not listened to, as what is shorter than 10 s may sound alike by chance");
    }
}

/// A given rate that most clips of a card do not state moves them by 0.1 % of the time of day.
void nameGivenRate(const Shoot& shoot, SyncDoubts& doubts) {
    const auto given = shoot.input.rules.timecodeRate;
    if (!given) return;
    for (CardDoubt& card : doubts.cards) {
        if (card.doubt.kind != Kind::constantOffset) continue;
        std::map<std::string, std::size_t> stated;
        for (const UUID& id : card.groupIDs)
            if (const SyncGroup* group = shoot.input.groups.find(id))
                if (const auto rate = group->video.timecodeFrameRate; rate && *rate != *given)
                    ++stated[rateText(*rate)];
        for (const auto& [rate, count] : stated)
            if (2 * count > card.groupIDs.size())
                addToMessage(card, doubts,
                             "the given rate, " + rateText(*given) +
                                 ", may be the cause: by their files, most of these clips count " + rate);
    }
}

} // namespace

void addWordsBesideClocks(const Shoot& shoot, SyncDoubts& doubts) {
    settleClocksFirst(shoot, doubts);
    nameClipsTooShortToHear(shoot, doubts);
    nameGivenRate(shoot, doubts);
}

} // namespace orvane
