#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace orvane {

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    const auto cards = handledClips(shoot);
    const auto rate = rateOfLabels(shoot);
    const OffsetCure cure(shoot, rate);
    for (const auto& entry : cards) {
        const CameraAndCard& key = entry.first;
        const HandledClips& card = entry.second;
        platform::throwIfStopped(shoot.stop);
        const auto moved = agreementOf(card.offsets, explanation::fewest);
        if (!moved || card.isConfirmed || card.unmoved.empty()) continue;
        const std::string_view camera = std::get<0>(key), recorder = std::get<1>(key);
        const auto day = std::get<2>(key);
        Card sound{std::string(recorder), day, {}};
        const bool isAlone = std::ranges::none_of(cards, [&](const auto& other) {
            return other.first != key && std::get<1>(other.first) == recorder &&
                   std::get<2>(other.first) == day;
        });
        const bool isPart = !findRecorder(sound, card.all);
        addCardDoubt(doubts,
                     {SyncDoubt::Kind::constantOffset,
                      "the sound of " + counted(moved->count, "clip", "clips") + " in '" +
                          std::string(camera) + "' was moved " + spanText(std::abs(moved->seconds)) +
                          (moved->seconds < 0 ? " earlier" : " later") +
                          " by hand, and that of the others, with recordings of the same card, was not: its "
                          "clock may be wrong by that",
                      "move the others by as much, or " +
                          DoubtCure(CureOption::Kind::soundOffset,
                                    offsetText(moved->seconds + shoot.input.rules.soundOffsetSeconds, rate))
                              .in(cure.scanOfRecordings(
                                  sound, isPart, isAlone ? std::set<std::string_view>() : std::set{camera})) +
                          "; lock a clip whose sound is right as it is" +
                          (isPart ? std::string() : cure.forOtherSound(sound))},
                     card.unmoved);
    }
}

} // namespace orvane
