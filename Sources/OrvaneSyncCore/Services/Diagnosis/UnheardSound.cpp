#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

bool isAnyHeard(const HandledClips& card) { return !card.heard.empty() || !card.elsewhere.empty(); }

} // namespace

void addUnheardSound(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.unheard == nullptr || shoot.input.unheard->empty()) return;
    const auto cards = handledClips(shoot);
    for (const auto& [key, card] : cards) {
        const auto& [camera, recorder, day] = key;
        const auto count = std::ranges::count_if(card.unmoved, [&](const Shoot::Clip* clip) {
            return isUnheard(shoot, clip->group->audioMatches.front().id);
        });
        // If one camera heard the card and this one did not, this one has the sound of another place.
        const bool isHeardByAny = std::ranges::any_of(cards, [&](const auto& other) {
            return std::get<1>(other.first) == std::get<1>(key) &&
                   std::get<2>(other.first) == std::get<2>(key) && isAnyHeard(other.second);
        });
        if (count < explanation::fewest || card.isConfirmed || isHeardByAny ||
            std::ranges::any_of(card.unmoved, [&](const Shoot::Clip* clip) {
                return doubts.has(clip->group->id, {Kind::otherDay, Kind::otherDateFits, Kind::constantOffset,
                                                    Kind::timecodeRate, Kind::ambiguous});
            }))
            continue;
        addCardDoubt(
            doubts,
            {Kind::otherDay,
             "the microphones of the cameras have speech in " + counted(count, "clip", "clips") + " in '" +
                 std::string(camera) + "', and nothing of it is in the recordings of '" +
                 std::string(recorder) + "' that lie under them: these may be of another day or another unit",
             "play one of the clips: where its sound is wrong, look for the recordings that belong to "
             "them, which are missing on the cards; where it is right, as the camera was far away, "
             "lock the clips"},
            card.unmoved);
    }
}

} // namespace orvane
