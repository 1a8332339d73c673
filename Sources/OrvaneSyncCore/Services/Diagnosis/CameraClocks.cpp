#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandsAtTheRecorder.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Services/Diagnosis/SuspectedCards.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

constexpr std::size_t mostOtherDays = 8; // of the recordings that are tried for a card, the nearest ones

class CameraClocks {
  public:
    CameraClocks(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                 SyncDoubts& doubts)
        : shoot_(shoot), clips_(clips.all), suspected_(suspected), doubts_(doubts),
          rate_(rateOfLabels(shoot)), cure_(shoot, rate_) {}

    void add() {
        for (const Card& card : camerasCards(shoot_)) {
            platform::throwIfStopped(shoot_.stop);
            offsetOf(card);
        }
    }

  private:
    void offsetOf(const Card& card) {
        std::vector<const Shoot::Clip*> clips, covered;
        for (const std::size_t file : card.files) {
            const Shoot::Clip& clip = shoot_.clips[file];
            if (clip.isDecided || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
            if (doubts_.has(clip.group->id, {Kind::constantOffset})) return;
            (clip.isCovered ? covered : clips).push_back(&clip);
        }
        if (std::cmp_less(clips.size(), explanation::fewest)) return;
        if (offsetOn(card, clips, covered, std::nullopt, chance::smallest) || !card.day) return;
        // The date of the camera may be wrong as well, though not where its own clips are of that day.
        std::vector<long> days;
        std::ranges::copy_if(suspected_.usedDays, std::back_inserter(days),
                             [&](long day) { return !card.isOf(day) && !isFilmedIn(card.folder, day); });
        std::ranges::stable_sort(days, {}, [&](long day) { return std::abs(day - *card.day); });
        days.resize(std::min(days.size(), mostOtherDays));
        for (const long day : days)
            if (offsetOn(card, clips, covered, day,
                         chance::smallest * chance::smallest / static_cast<double>(days.size())))
                return;
    }
    bool isFilmedIn(const std::string& folder, long day) const {
        return std::ranges::any_of(clips_, [&](const Shoot::Clip* clip) {
            return clip->likelyDay() == day && folderOf(clip->group->video) == folder;
        });
    }
    /// `soundDay`: of the recordings, which then are tried on the day of the card. Whether there is a doubt.
    bool offsetOn(const Card& card, const std::vector<const Shoot::Clip*>& clips,
                  const std::vector<const Shoot::Clip*>& covered, std::optional<long> soundDay,
                  double mostChance) {
        std::vector<FilePlace> sounds;
        std::vector<std::size_t> files;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (!suspected_.isSuspected[i] && (!soundDay || shoot_.recordings[i].place.day == soundDay))
                files.push_back(i);
        files = shoot_.wholes.oneOfEach(files);
        for (const std::size_t file : files) {
            sounds.push_back(shoot_.wholes.places[file]);
            if (soundDay) sounds.back().day = card.day;
        }
        const auto common = commonOffset(
            clips, sounds,
            [](double, const std::vector<const Shoot::Clip*>& looked) { return looked.size(); }, mostChance,
            rate_);
        // By more than a day, it is the date that is wrong first; by nothing, the date alone.
        if (!common || std::abs(common->seconds) >= secondsADay ||
            std::abs(common->seconds) <= coverSlackSeconds)
            return false;
        std::set<std::size_t> used;
        std::vector<const Shoot::Clip*> found;
        HandsAtTheRecorder hands;
        for (const Shoot::Clip* clip : clips) {
            const auto sound = std::ranges::find_if(sounds, [&](const FilePlace& place) {
                const auto window = windowOf(*clip, place, 0);
                return window && window->first <= common->seconds && common->seconds <= window->last;
            });
            if (sound == sounds.end()) continue;
            found.push_back(clip);
            const double apart = secondsApart(*clip, *sound).value_or(0), into = apart - common->seconds;
            if (!soundDay)
                hands.add({apart, apart + clip->place->range.durationSeconds()},
                          {0, sound->range.durationSeconds()});
            used.insert(shoot_.wholes.partAt(files[static_cast<std::size_t>(sound - sounds.begin())], into));
        }
        if (std::cmp_less(used.size(), explanation::fewest) ||
            static_cast<double>(found.size()) <= explanation::clearly * static_cast<double>(covered.size()) ||
            hands.explain(*common))
            return false;
        const std::size_t matched = found.size();
        found.insert(found.end(), covered.begin(), covered.end());
        std::ranges::sort(found); // in the order of the clips
        const Card scan{
            card.folder, soundDay ? card.day : std::nullopt, {}, soundDay ? *card.day - *soundDay : 0};
        addCardDoubt(
            doubts_,
            {Kind::constantOffset,
             "the clips in '" + card.folder + "' are " +
                 (soundDay ? "dated " + dayText(*card.day) + " instead of " + dayText(*soundDay) + " and "
                           : std::string()) +
                 spanText(std::abs(common->seconds)) + (common->seconds > 0 ? " late" : " early") +
                 " against recordings that fit other clips: with these moved by that, " +
                 std::to_string(matched) + " of " + counted(clips.size(), "clip", "clips") +
                 " without all of their sound would match" + common->knownTo(rate_),
             cure_.of(scan, common->seconds).in(cure_.scanOfClips(scan)) +
                 (soundDay ? " if a clap shows it, else look for the sound of " + dayText(*card.day) : "") +
                 common->clapAfter(rate_)},
            found);
        return true;
    }

    const Shoot& shoot_;
    const std::vector<const Shoot::Clip*>& clips_;
    const SuspectedCards& suspected_;
    SyncDoubts& doubts_;
    const TimecodeFrameRate rate_;
    const OffsetCure cure_;
};

} // namespace

void addCameraClockDoubts(const Shoot& shoot, const TimedClips& clips, const SuspectedCards& suspected,
                          SyncDoubts& doubts) {
    CameraClocks(shoot, clips, suspected, doubts).add();
}

} // namespace orvane
