#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace orvane {

namespace {

// 48.048 instead of 48 kHz, 24 instead of 23.976 frames: a pull-down or pull-up is by 1000 to 1001.
constexpr double pulled = 0.001;
constexpr double driftSlack = 0.0004; // both ends of 40 s are heard to 10 ms
constexpr double driftMajority = 0.8;

/// Clips of one camera folder with sound of one recorder.
struct HeardClips {
    std::vector<double> drifts;
    std::vector<const Shoot::Clip*> clips;
};

} // namespace

void addDrift(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardLags == nullptr) return;
    std::map<std::pair<std::string_view, std::string_view>, HeardClips> cards;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.primary || clip.group->isExcludedFromExport) continue;
        HeardClips& card =
            cards[{folderOf(clip.group->video), shoot.recorderOf(*clip.group->primaryAudio())}];
        card.clips.push_back(&clip);
        const auto lag = shoot.input.heardLags->find(clip.group->audioMatches.front().id);
        if (lag != shoot.input.heardLags->end() && lag->second.drift)
            card.drifts.push_back(*lag->second.drift);
    }
    for (const auto& [folders, card] : cards)
        for (const double sign : {-1.0, 1.0}) {
            const auto count = std::ranges::count_if(
                card.drifts, [&](double drift) { return std::abs(drift - sign * pulled) <= driftSlack; });
            if (count < explanation::fewest ||
                static_cast<double>(count) < driftMajority * static_cast<double>(card.drifts.size()))
                continue;
            const bool isSlow = sign < 0;
            addCardDoubt(doubts,
                         {SyncDoubt::Kind::drift,
                          "the sound in '" + std::string(folders.second) + "' runs 0.1 % " +
                              (isSlow ? "slower" : "faster") + " than the clips in '" +
                              std::string(folders.first) + "', as the cameras' own sound shows at " +
                              "the head and at the tail of " + counted(count, "clip", "clips") +
                              ": after a minute it is 60 ms " + (isSlow ? "late" : "early"),
                          "ask the sound department at which rate the recorder ran (48.048 or 47.952 kHz "
                          "for 48), and have the recordings converted by 0.1 % before the scan"},
                         card.clips);
        }
}

} // namespace orvane
