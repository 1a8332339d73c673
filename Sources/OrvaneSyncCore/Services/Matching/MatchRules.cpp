#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvane {

namespace {

/// How many clips count at each rate.
class Votes {
  public:
    void add(const MediaAsset& video) {
        const auto rate = static_cast<std::size_t>(labelRate(video));
        if (counts_[rate]++ == 0) first_[rate] = ++order_;
    }
    TimecodeFrameRate most() const {
        std::size_t best = static_cast<std::size_t>(TimecodeFrameRate::fps24);
        for (std::size_t i = 0; i < counts_.size(); ++i)
            if (counts_[i] > counts_[best] ||
                (counts_[i] > 0 && counts_[i] == counts_[best] && first_[i] < first_[best]))
                best = i;
        return static_cast<TimecodeFrameRate>(best);
    }

  private:
    std::array<std::size_t, timecodeFrameRateCount> counts_{};
    std::array<std::size_t, timecodeFrameRateCount> first_{};
    std::size_t order_ = 0;
};

} // namespace

MatchRules MatchRules::of(MatchingDays days, const SourceCorrections& corrections,
                          TimecodeFrameRate rateOfClips) {
    return {days, corrections.soundOffsetSeconds(rateOfClips), corrections.soundDay(),
            corrections.timecodeRate};
}

TimecodeFrameRate labelRate(const MediaAsset& video) {
    constexpr double defaultFrameRate = 24;
    if (video.timecodeFrameRate) return *video.timecodeFrameRate;
    return TimecodeUtils::frameRate(
        exactRateValue(video.projectFrameRate.value_or(video.frameRate.value_or(defaultFrameRate))));
}

TimecodeFrameRate rateOfMostClips(const std::vector<MediaAsset>& videos) {
    Votes votes;
    for (const MediaAsset& video : videos) votes.add(video);
    return votes.most();
}

TimecodeFrameRate rateOfMostClips(const SyncGroupList& groups) {
    Votes votes;
    for (const SyncGroup& group : groups) votes.add(group.video);
    return votes.most();
}

} // namespace orvane
