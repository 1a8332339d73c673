#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace orvane {

namespace {

/// A recorder that ran through all clips. Its recordings are too few to find its clock: they lie under the
/// clips at any offset in a range of minutes or hours. If exactly one whole hour is in that range, it is
/// worth checking with a clap.
class LongRecordings {
  public:
    LongRecordings(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts)
        : shoot_(shoot), clips_(clips), doubts_(doubts), rate_(rateOfLabels(shoot)) {}

    void add() {
        const std::vector<bool> isUsed = shoot_.usedWholes();
        std::map<std::string, std::vector<std::size_t>> folders; // of recordings that lie under no clip
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (!isUsed[shoot_.wholes.firstOf[i]])
                folders[std::string(folderOf(*shoot_.recordings[i].asset))].push_back(i);
        for (const auto& [folder, files] : folders) {
            const auto wholes = shoot_.wholes.oneOfEach(files);
            if (std::cmp_less(wholes.size(), explanation::fewest)) offsetOf(folder, wholes);
        }
    }

  private:
    void offsetOf(const std::string& folder, const std::vector<std::size_t>& wholes) {
        platform::throwIfStopped(shoot_.stop);
        Covers sound(shoot_.input.rules.days);
        for (const std::size_t file : wholes) sound.add(shoot_.wholes.places[file], file);
        sound.finish();
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip* clip : clips_.evidence)
            if (std::ranges::any_of(wholes, [&](std::size_t file) { return mayOverlap(file, *clip); }))
                clips.push_back(clip);
        // If some clips have sound, the others may have been shot without.
        if (std::cmp_less(clips.size(), explanation::fewest) ||
            std::ranges::any_of(clips, [&](const Shoot::Clip* clip) {
                return !clip->group->audioMatches.empty() ||
                       doubts_.has(clip->group->id,
                                   {SyncDoubt::Kind::constantOffset, SyncDoubt::Kind::timecodeRate});
            }))
            return;
        for (const double step : {2 * niceOffsetStepSeconds, niceOffsetStepSeconds}) {
            const auto found = offsetsFor(clips, sound, step);
            if (found.empty()) continue;
            if (found.size() == 1) tell(folder, wholes, clips, found.front(), step);
            return;
        }
    }
    /// For clips of other days, the date would be wrong, not the clock.
    bool mayOverlap(std::size_t file, const Shoot::Clip& clip) const {
        const auto recorded = shoot_.wholes.places[file].day, filmed = clip.likelyDay();
        return !recorded || !filmed || std::abs(*recorded - *filmed) <= 1;
    }
    /// Multiples of the step at which the sound lies under all of the clips.
    std::vector<double> offsetsFor(const std::vector<const Shoot::Clip*>& clips, const Covers& sound,
                                   double step) const {
        std::vector<double> found;
        const double labels = labelSeconds(step, rate_);
        for (double count = -secondsADay / step; count <= secondsADay / step; ++count)
            for (const double offset : {count * labels, count * step})
                if (count != 0 && std::ranges::all_of(clips, [&](const Shoot::Clip* clip) {
                        FilePlace place = clip->likelyPlace();
                        place.range = moved(place.range, -offset);
                        return sound.of(place).has_value();
                    })) {
                    found.push_back(offset);
                    break;
                }
        return found;
    }
    void tell(const std::string& folder, const std::vector<std::size_t>& wholes,
              const std::vector<const Shoot::Clip*>& clips, double offset, double step) {
        const Card card{folder, shoot_.wholes.places[wholes.front()].day, wholes};
        const OffsetCure cure(shoot_, rate_);
        addCardDoubt(doubts_,
                     {SyncDoubt::Kind::constantOffset,
                      nameOfCard(card, shoot_) + " are matched to no clip: moved by " +
                          offsetSpanText(std::abs(offset), rate_) + (offset < 0 ? " earlier" : " later") +
                          ", and by no other " + (step > niceOffsetStepSeconds ? "whole hour" : "half hour") +
                          ", they would cover all " + counted(clips.size(), "clip", "clips"),
                      cure.of(card, offset) + " if a clap shows it"},
                     clips);
    }

    const Shoot& shoot_;
    const TimedClips& clips_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
};

} // namespace

void addLongRecordings(const Shoot& shoot, const TimedClips& clips, SyncDoubts& doubts) {
    LongRecordings(shoot, clips, doubts).add();
}

} // namespace orvane
