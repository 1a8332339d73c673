#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

namespace {

std::string namesOf(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips) {
    constexpr std::size_t most = 4;
    std::vector<std::string> names;
    for (const Shoot::Clip* clip : clips)
        if (names.size() < most) names.push_back(shoot.nameOf(clip->group->video));
    return platform::text::joined(names, ", ") +
           (clips.size() > most ? " and " + counted(clips.size() - most, "more clip", "more clips") : "");
}

/// How much of the clip its sound meets, in seconds, once it is moved.
double metSeconds(const SyncGroup& group, double movedBySeconds) {
    std::vector<SyncEngine::TCRange> ranges;
    for (const AudioMatch& match : group.audioMatches) {
        const double start = match.syncOffsetSeconds + movedBySeconds;
        ranges.push_back({start, start + match.audio->durationSeconds.value_or(0)});
    }
    return coveredSeconds({0, group.video.durationSeconds.value_or(0)}, std::move(ranges));
}

/// The clips of the card that a move by that offset may put right. Those that would lose most of their sound
/// by it are where they belong: the others were moved because they had none there.
std::vector<const Shoot::Clip*> mayBeMoved(const HandledClips& card, double seconds) {
    constexpr double share = 0.5;
    std::vector<const Shoot::Clip*> clips;
    for (const Shoot::Clip* clip : card.unmoved)
        if (metSeconds(*clip->group, seconds) >= share * metSeconds(*clip->group, 0)) clips.push_back(clip);
    return clips;
}

/// Whether the cameras heard the sound of clips that were not moved, and did not hear it at that offset.
bool isRefuted(const HandledClips& card, double seconds) {
    const auto heard = agreementOf(card.heard, explanation::fewest, 0);
    return heard && std::abs(heard->seconds - seconds) > agreeingByHandSeconds;
}

/// Whether the recordings under the moved clips are of another recorder than all others.
bool areOfOtherRecorder(const HandledClips& card, double seconds) {
    std::vector<const Shoot::Clip*> moved;
    std::ranges::copy_if(card.all, std::back_inserter(moved), [&](const Shoot::Clip* clip) {
        return std::abs(clip->group->manualAudioOffsetSeconds - seconds) <= agreeingByHandSeconds;
    });
    return areOfTwoRecorders(moved, card.unmoved);
}

} // namespace

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    const auto cards = handledClips(shoot);
    for (const auto& entry : cards) {
        const CameraAndCard& key = entry.first;
        const HandledClips& card = entry.second;
        platform::throwIfStopped(shoot.stop);
        const auto moved = agreementOf(card.offsets, explanation::fewest);
        if (!moved || card.isConfirmed || isRefuted(card, moved->seconds)) continue;
        const std::vector<const Shoot::Clip*> others = mayBeMoved(card, moved->seconds);
        if (others.empty() || areOfOtherRecorder(card, moved->seconds)) continue;
        const std::string frames = std::to_string(framesOf(moved->seconds, others.front()->group->video));
        const std::string those = "the sound of " + counted(moved->count, "clip", "clips") + " in '" +
                                  std::string(std::get<0>(key)) + "' was moved " +
                                  spanText(std::abs(moved->seconds)) +
                                  (moved->seconds < 0 ? " earlier" : " later") + " by hand, and that of ";
        const std::string why = ", with recordings of the same card, was not: its clock may be wrong by that";
        // No option: it would move again what was moved by hand.
        addCardDoubt(doubts,
                     {.kind = SyncDoubt::Kind::constantOffset,
                      .message = those + namesOf(shoot, others) + why,
                      .cure = "move the others by as much" +
                              cureWords::inTable(frames + " under 'offset_frames'") +
                              ", or lock a clip whose sound is right as it is",
                      .windowMessage = those + "the others" + why},
                     others);
    }
}

} // namespace orvane
