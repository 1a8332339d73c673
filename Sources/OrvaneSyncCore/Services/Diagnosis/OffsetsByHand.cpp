#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

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

/// Clips that could still have their sound if it was moved by so much. A part of a camera's card may be an
/// hour off and the rest right: then the offset would take the sound from the rest.
std::vector<const Shoot::Clip*> thatKeepTheirSound(const std::vector<const Shoot::Clip*>& clips,
                                                   double seconds) {
    std::vector<const Shoot::Clip*> kept;
    std::ranges::copy_if(clips, std::back_inserter(kept), [&](const Shoot::Clip* clip) {
        const SyncGroup& group = *clip->group;
        return std::ranges::any_of(group.audioMatches, [&](const AudioMatch& match) {
            const double start = match.syncOffsetSeconds + group.manualAudioOffsetSeconds + seconds;
            return start < group.video.durationSeconds.value_or(0) &&
                   start + match.audio->durationSeconds.value_or(0) > 0;
        });
    });
    return kept;
}

} // namespace

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    const auto cards = handledClips(shoot);
    for (const auto& entry : cards) {
        const CameraAndCard& key = entry.first;
        const HandledClips& card = entry.second;
        platform::throwIfStopped(shoot.stop);
        const auto moved = agreementOf(card.offsets, explanation::fewest);
        if (!moved || card.isConfirmed) continue;
        const auto unmoved = thatKeepTheirSound(card.unmoved, moved->seconds);
        if (unmoved.empty()) continue;
        const std::string frames = std::to_string(framesOf(moved->seconds, unmoved.front()->group->video));
        const std::string those = "the sound of " + counted(moved->count, "clip", "clips") + " in '" +
                                  std::string(std::get<0>(key)) + "' was moved " +
                                  spanText(std::abs(moved->seconds)) +
                                  (moved->seconds < 0 ? " earlier" : " later") + " by hand, and that of ";
        const std::string why = ", with recordings of the same card, was not: its clock may be wrong by that";
        // No option: it would move again what was moved by hand.
        addCardDoubt(doubts,
                     {.kind = SyncDoubt::Kind::constantOffset,
                      .message = those + namesOf(shoot, unmoved) + why,
                      .cure = "move the others by as much" +
                              cureWords::inTable(frames + " under 'offset_frames'") +
                              ", or lock a clip whose sound is right as it is",
                      .windowMessage = those + "the others" + why},
                     unmoved);
    }
}

} // namespace orvane
