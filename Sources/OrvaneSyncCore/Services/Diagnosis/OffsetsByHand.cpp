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

} // namespace

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    const auto cards = handledClips(shoot);
    for (const auto& entry : cards) {
        const CameraAndCard& key = entry.first;
        const HandledClips& card = entry.second;
        platform::throwIfStopped(shoot.stop);
        const auto moved = agreementOf(card.offsets, explanation::fewest);
        if (!moved || card.isConfirmed || card.unmoved.empty()) continue;
        const std::string frames =
            std::to_string(framesOf(moved->seconds, card.unmoved.front()->group->video));
        const std::string those = "the sound of " + counted(moved->count, "clip", "clips") + " in '" +
                                  std::string(std::get<0>(key)) + "' was moved " +
                                  spanText(std::abs(moved->seconds)) +
                                  (moved->seconds < 0 ? " earlier" : " later") + " by hand, and that of ";
        const std::string why = ", with recordings of the same card, was not: its clock may be wrong by that";
        // No option: it would move again what was moved by hand.
        addCardDoubt(doubts,
                     {.kind = SyncDoubt::Kind::constantOffset,
                      .message = those + namesOf(shoot, card.unmoved) + why,
                      .cure = "move the others by as much" +
                              cureWords::inTable(frames + " under 'offset_frames'") +
                              ", or lock a clip whose sound is right as it is",
                      .windowMessage = those + "the others" + why},
                     card.unmoved);
    }
}

} // namespace orvane
