#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace orvane {

namespace {

// Less is a nudge to the frame, or a camera's own delay.
constexpr double leastByHandSeconds = 0.2;
constexpr double agreeingSeconds = 0.1; // around the median: claps are set to a frame
constexpr double mostlyAgreeing = 0.8;  // of the clips that were moved

/// Clips of one camera folder with sound of one card.
struct HandledClips {
    std::vector<double> offsets;             ///< of those that were moved by hand, seconds
    std::vector<const Shoot::Clip*> unmoved; ///< and not settled
    bool isConfirmed = false;                ///< somebody settled one where timecode laid it
};

} // namespace

void addOffsetsByHand(const Shoot& shoot, SyncDoubts& doubts) {
    std::map<std::tuple<std::string_view, std::string_view, std::optional<long>>, HandledClips> cards;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.primary || clip.group->isExcludedFromExport) continue;
        const Recording& sound = shoot.recordings[*clip.primary];
        HandledClips& card = cards[{folderOf(clip.group->video), folderOf(*sound.asset), sound.place.day}];
        if (std::abs(clip.group->manualAudioOffsetSeconds) >= leastByHandSeconds)
            card.offsets.push_back(clip.group->manualAudioOffsetSeconds);
        else if (clip.isDecided)
            card.isConfirmed = true;
        else
            card.unmoved.push_back(&clip);
    }
    const auto rate = shoot.input.rules.timecodeRate.value_or(rateOfMostClips(shoot.input.groups));
    for (auto& [key, card] : cards) {
        platform::throwIfStopped(shoot.stop);
        if (card.isConfirmed || card.unmoved.empty() ||
            std::cmp_less(card.offsets.size(), explanation::fewest))
            continue;
        const auto middle = card.offsets.begin() + std::ssize(card.offsets) / 2;
        std::ranges::nth_element(card.offsets, middle);
        const double offset = *middle;
        const auto agreeing = std::ranges::count_if(
            card.offsets, [&](double own) { return std::abs(own - offset) <= agreeingSeconds; });
        if (agreeing < explanation::fewest ||
            static_cast<double>(agreeing) < mostlyAgreeing * static_cast<double>(card.offsets.size()))
            continue;
        addCardDoubt(doubts,
                     {SyncDoubt::Kind::constantOffset,
                      "the sound of " + counted(agreeing, "clip", "clips") + " in '" +
                          std::string(std::get<0>(key)) + "' was moved " + spanText(std::abs(offset)) +
                          (offset < 0 ? " earlier" : " later") +
                          " by hand, and that of the others, with recordings of the same card, was not: its "
                          "clock may be wrong by that",
                      "move the others by as much, or --sound-offset " +
                          offsetText(offset + shoot.input.rules.soundOffsetSeconds, rate) +
                          " in a scan of this card alone; lock a clip whose sound is right as it is"},
                     card.unmoved);
    }
}

} // namespace orvane
