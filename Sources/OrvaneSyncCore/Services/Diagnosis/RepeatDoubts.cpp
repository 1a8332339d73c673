#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

/// Takes at the same minutes of each hour also fit a clock that is hours off, except the first or last of
/// them. The clips are in doubt if another hour finds all the sound that they have, and more.
class RepeatDoubts {
  public:
    RepeatDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), rate_(rateOfLabels(shoot)), cure_(shoot, rate_), clips_(clips.all),
          covers_(shoot.input.rules.days) {
        for (std::size_t i = 0; i < shoot.recordings.size(); ++i)
            if (shoot.wholes.isFirst(i)) covers_.add(shoot.wholes.places[i], i);
        covers_.finish();
    }

    void add() {
        const bool isReported = repeatOf(clips_, std::nullopt);
        std::vector<Card> all = cardsOf(shoot_.clips);
        if (isReported || all.size() < 2) return;
        for (const Card& card : all) {
            platform::throwIfStopped(shoot_.stop);
            std::vector<const Shoot::Clip*> clips;
            for (const std::size_t file : card.files)
                if (std::ranges::binary_search(clips_, &shoot_.clips[file])) // both in the order of the clips
                    clips.push_back(&shoot_.clips[file]);
            repeatOf(clips, card.folder);
        }
    }

  private:
    /// The result with the recordings moved by the offset; absent if a clip loses the sound that it has.
    std::optional<Found> fitAt(const std::vector<const Shoot::Clip*>& clips, double offset) const {
        Found fit;
        std::set<std::size_t> used;
        for (const Shoot::Clip* clip : clips) {
            FilePlace place = *clip->place;
            place.range = moved(place.range, -offset);
            auto sound = covers_.of(place);
            if (!sound && offset == 0 && clip->isCovered)
                sound = shoot_.wholes.firstOf[*clip->primary]; // by several
            if (sound) used.insert(*sound);
            if (sound || (offset == 0 && clip->isCovered))
                ++fit.clips;
            else if (clip->isCovered)
                return std::nullopt;
        }
        fit.recordings = static_cast<int>(used.size());
        return fit;
    }
    /// `folder`: of a camera's clips; absent for the clips of all cameras. Returns whether there is a doubt.
    bool repeatOf(const std::vector<const Shoot::Clip*>& clips, const std::optional<std::string>& folder) {
        const auto isConfirmed = [&](const Shoot::Clip& clip) {
            return clip.isDecided && clip.isCovered && !clip.group->isExcludedFromExport &&
                   (!folder || *folder == folderOf(clip.group->video));
        };
        const auto isUnheard = [](const Shoot::Clip* clip) { return !clip->isCovered; };
        const auto isExplained = [&](const Shoot::Clip* clip) {
            return doubts_.has(clip->group->id, {Kind::constantOffset, Kind::timecodeRate});
        };
        if (std::ranges::none_of(clips, isUnheard) || std::ranges::any_of(clips, isExplained) ||
            std::ranges::any_of(shoot_.clips, isConfirmed))
            return false;
        const Found now = *fitAt(clips, 0);
        Found most = now;
        double best = 0;
        int tries = 0;
        constexpr int halfHours = 24;
        for (int count = 1; count <= halfHours; ++count)
            for (const double step : {niceOffsetStepSeconds, labelSeconds(niceOffsetStepSeconds, rate_)})
                for (const double offset : {count * step, -count * step}) {
                    ++tries;
                    const auto fit = fitAt(clips, offset);
                    if (!fit || fit->clips <= most.clips || fit->recordings <= now.recordings) continue;
                    most = *fit;
                    best = offset;
                }
        // A few clips that were shot without sound among many with sound say nothing about the clock.
        constexpr double leastGain = 0.1;
        if (best == 0 || most.clips < explanation::fewest || now.clips == 0 ||
            most.clips - now.clips < leastGain * now.clips ||
            tries * chance::atLeast(most.clips, static_cast<int>(clips.size()), soundShare(shoot_, clips)) >
                chance::smallest)
            return false;
        const std::string all = counted(clips.size(), "clip", "clips");
        const Card card{folder.value_or(""), std::nullopt, {}};
        addCardDoubt(doubts_,
                     {Kind::constantOffset,
                      "takes repeat: with the recordings " + offsetSpanText(std::abs(best), rate_) +
                          (best < 0 ? " earlier, " : " later, ") + std::to_string(most.clips) + " of " + all +
                          (folder ? " in '" + *folder + "'" : std::string()) + " have sound, and " +
                          std::to_string(now.clips) + " as they are; a clock may be wrong by that",
                      cure_.of(card, best).in(folder ? cure_.scanOfClips(card) : std::nullopt) +
                          " if a clap shows it, else lock a clip whose clap is right"},
                     clips);
        return true;
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
    OffsetCure cure_;
    const std::vector<const Shoot::Clip*>& clips_;
    Covers covers_; ///< all recordings at their current places
};

} // namespace

void addRepeatDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts) {
    RepeatDoubts(shoot, clips, doubts).add();
}

} // namespace orvane
