#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <set>
#include <utility>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

/// A wrong date of a recorder's card, with right hours: on another day the card lies under clips at its own
/// hours.
class RecorderDates {
  public:
    RecorderDates(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), clips_(shoot), cure_(shoot, rateOfLabels(shoot)) {
        for (const Shoot::Clip* clip : clips_.all)
            if (const auto day = clip->place->knownDay()) days_.insert(*day);
    }

    void add() {
        if (days_.empty()) return;
        const RecordersCards recorders(shoot_, clips_.evidence);
        for (const Card& card : recorders.cards) {
            platform::throwIfStopped(shoot_.stop);
            if (card.day && recorders.fitsFewClips(card)) dateOf(card);
        }
    }

  private:
    struct Fit {
        Card card; ///< on the day that is tried
        std::vector<const Shoot::Clip*> clips;
        std::size_t recordings = 0; ///< a recording that is cut into several files counts once
        std::size_t all = 0;        ///< recordings of the card
        std::size_t files = 0;      ///< files in which the clips begin
    };

    void dateOf(const Card& card) {
        Fit best;
        for (const long day : nearestDays(card)) {
            Fit fit = fitOn(card, day);
            if (fit.recordings > best.recordings) best = std::move(fit);
        }
        if (std::cmp_less(best.files, explanation::fewest) || isReported(best.clips)) return;
        const auto count = static_cast<long long>(best.all);
        addCardDoubt(doubts_,
                     {Kind::otherDateFits,
                      nameOfCard(card, shoot_) + " are dated " + dayText(*card.day) + ", and " +
                          std::to_string(best.recordings) + " of " +
                          counted(count, "recording", "recordings") + " lie under clips of " +
                          dayText(*best.card.day) + " by the time of day",
                      DoubtCure(CureOption::Kind::soundDate, dayText(*best.card.day))
                              .in(cure_.scanOfRecordings(best.card, false)) +
                          " if the recorder's date is wrong" + cure_.forOtherSound(card)},
                     best.clips);
    }
    /// The days of the clips, except those on which the card is already.
    std::vector<long> nearestDays(const Card& card) const {
        constexpr std::size_t most = 8;
        std::vector<long> days;
        for (const long day : days_)
            if (!card.isOf(day)) days.push_back(day);
        std::ranges::stable_sort(days, {}, [&](long day) { return std::abs(day - *card.day); });
        days.resize(std::min(days.size(), most));
        return days;
    }
    /// Without clips and recordings if they are too few or fit by chance.
    Fit fitOn(const Card& card, long day) const {
        Fit fit{card, {}};
        fit.card.movedByDays = day - *card.day;
        fit.card.day = day;
        const auto positioned = [&](std::size_t file) {
            FilePlace place = shoot_.wholes.places[file];
            *place.day += fit.card.movedByDays;
            return onLine(place);
        };
        Cover sound, pictures;
        SyncEngine::TCRange hours{std::numeric_limits<double>::infinity(),
                                  -std::numeric_limits<double>::infinity()};
        const auto wholes = shoot_.wholes.oneOfEach(card.files);
        for (const std::size_t file : wholes) {
            const SyncEngine::TCRange range = positioned(file);
            sound.add(range, file);
            hours.startSeconds = std::min(hours.startSeconds, range.startSeconds);
            hours.endSeconds = std::max(hours.endSeconds, range.endSeconds);
        }
        sound.finish();
        std::set<std::size_t> used, parts;
        int within = 0;
        for (const Shoot::Clip* clip : clips_.all) {
            FilePlace place = *clip->place;
            place.day = place.knownDay();
            if (!place.day || !SyncEngine::overlapDuration(onLine(place), hours)) continue;
            pictures.add(onLine(place), std::size_t(within++));
            const auto found = sound.ofEither(onLine(place));
            if (!found) continue;
            fit.clips.push_back(clip);
            used.insert(*found);
            const double into = onLine(place).startSeconds - positioned(*found).startSeconds;
            parts.insert(shoot_.wholes.partAt(*found, into));
        }
        pictures.finish();
        const auto shareOf = [&](const Cover& cover) {
            return cover.shareOf(hours.startSeconds, hours.endSeconds);
        };
        const auto matched = static_cast<int>(fit.clips.size());
        const double byChance = chance::atLeast(matched, within, std::max(shareOf(sound), shareOf(pictures)));
        const bool isMuch =
            static_cast<double>(used.size()) >= explanation::majority * static_cast<double>(wholes.size());
        if (isMuch && static_cast<double>(days_.size()) * byChance <= chance::smallest)
            fit.recordings = used.size();
        fit.all = wholes.size();
        fit.files = parts.size();
        return fit;
    }
    /// Whether most of the clips already have a doubt about their day or their clock.
    bool isReported(const std::vector<const Shoot::Clip*>& clips) const {
        const auto told = std::ranges::count_if(clips, [&](const Shoot::Clip* clip) {
            return doubts_.has(clip->group->id, {Kind::otherDateFits, Kind::otherDay, Kind::constantOffset,
                                                 Kind::timecodeRate});
        });
        return std::cmp_greater(2 * told, clips.size());
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    const TimedClips clips_;
    const OffsetCure cure_;
    std::set<long> days_; ///< of the clips
};

} // namespace

void addRecorderDates(const Shoot& shoot, SyncDoubts& doubts) {
    // A given date is the date of all recordings.
    if (!shoot.input.rules.soundDay) RecorderDates(shoot, doubts).add();
}

} // namespace orvane
