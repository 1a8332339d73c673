#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cmath>
#include <set>
#include <utility>

namespace orvane {

namespace {

/// Timecode that was counted at another rate than the files say.
class RateDoubts {
  public:
    RateDoubts(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), clips_(clips), rate_(rateOfLabels(shoot)) {}

    bool add() {
        const auto rate = otherRate();
        if (rate) addRate(*rate);
        return rate.has_value();
    }

  private:
    struct Rate {
        TimecodeFrameRate rate;
        int found;
    };

    /// The rate of a shoot at which most clips without sound find it, where labels that count alike were read
    /// at another: 23.976 as 24, drop frame as non-drop.
    std::optional<Rate> otherRate() const {
        const double now = static_cast<double>(clips_.all.size() - clips_.uncovered.size());
        if (static_cast<double>(clips_.all.size()) <= explanation::clearly * now) return std::nullopt;
        const double share = soundShare(shoot_, clips_.all);
        std::optional<Rate> best;
        int most = explanation::fewest - 1;
        using enum TimecodeFrameRate;
        for (const auto candidate :
             {fps23_976, fps24, fps29_97, fps29_97d, fps30, fps47_952, fps48, fps59_94, fps59_94d, fps60}) {
            if (candidate == shoot_.input.rules.timecodeRate ||
                timecodeRate::maxFrames(candidate) != timecodeRate::maxFrames(rate_))
                continue;
            platform::throwIfStopped(shoot_.stop);
            const auto [all, without] = foundAt(candidate);
            if (without.clips <= most || without.recordings < explanation::fewest) continue;
            if (without.clips < explanation::majority * static_cast<double>(clips_.uncovered.size()) ||
                all.clips <= explanation::clearly * now ||
                chance::atLeast(without.clips, static_cast<int>(clips_.uncovered.size()), share) >
                    chance::smallest)
                continue;
            most = without.clips;
            best = Rate{candidate, without.clips};
        }
        return best;
    }
    static bool areApart(const FilePlace& a, const FilePlace& b) {
        constexpr double aFrame = 0.01; // and less, at any rate
        return std::abs(a.range.startSeconds - b.range.startSeconds) > aFrame;
    }
    /// Of all clips, and of those without sound.
    std::pair<Found, Found> foundAt(TimecodeFrameRate rate) const {
        MatchRules rules = shoot_.input.rules;
        rules.timecodeRate = rate;
        Places places(rules);
        Covers covers(rules.days);
        std::vector<bool> isMoved(shoot_.recordings.size());
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (auto place = places.of(*shoot_.recordings[i].asset)) {
                place->day = shoot_.recordings[i].place.day;
                covers.add(*place, i);
                isMoved[i] = areApart(*place, shoot_.recordings[i].place);
            }
        covers.finish();
        std::set<std::size_t> used;
        Found all, without;
        for (const Shoot::Clip* clip : clips_.all) {
            auto place = places.of(clip->group->video);
            if (place) place->day = clip->place->day;
            const auto sound = place ? covers.of(*place) : std::nullopt;
            if (!sound) continue;
            ++all.clips;
            // What lies under a clip where both are read as they are is kept apart by something else.
            if (clip->isCovered || !(isMoved[*sound] || areApart(*place, *clip->place))) continue;
            ++without.clips;
            used.insert(*sound);
        }
        without.recordings = static_cast<int>(used.size());
        return {all, without};
    }
    void addRate(const Rate& rate) {
        const std::string text = rateText(rate.rate);
        addCardDoubt(doubts_,
                     {SyncDoubt::Kind::timecodeRate,
                      "clips and recordings drift apart with the time of day; with timecode that counts " +
                          text + " frames a second, " + std::to_string(rate.found) + " of " +
                          counted(clips_.uncovered.size(), "clip", "clips") +
                          " without all of their sound would match",
                      "--tc-rate " + text},
                     clips_.all); // what has sound has it by the wrong rate
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    const TimedClips& clips_;
    TimecodeFrameRate rate_;
};

} // namespace

bool addRateDoubt(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts) {
    return RateDoubts(shoot, clips, doubts).add();
}

} // namespace orvane
