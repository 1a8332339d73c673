#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

// Room tone, wild tracks and talk between takes are shorter.
constexpr double leastLoneSeconds = 600;
constexpr std::size_t mostLone = 3;
constexpr std::size_t clipsOfALone = 4; // clips that are analysed for each recording
// The length to read times its channels: half a minute of reading from a card.
constexpr double mostChannelSeconds = 40000;

/// A long recording that no clip has, and clips with other sound that may also have this one.
struct Lone {
    const MediaAsset* recording;
    std::vector<const Shoot::Clip*> clips;

    SoundClaim claim(const Shoot::Clip& clip) const {
        return {clip.group->id, recording->id, 0, *recording->durationSeconds};
    }
};

/// A sample of the clips that have sound.
std::vector<const Shoot::Clip*> clipsToHear(const Shoot& shoot) {
    std::vector<const Shoot::Clip*> all, result;
    for (const Shoot::Clip& clip : shoot.clips)
        if (clip.primary && clip.place && isAudible(clip)) all.push_back(&clip);
    const std::size_t count = std::min(all.size(), clipsOfALone);
    for (std::size_t i = 0; i < count; ++i) result.push_back(all[i * all.size() / count]);
    return result;
}

std::vector<Lone> loneRecordings(const Shoot& shoot) {
    std::vector<Lone> result;
    std::vector<const Shoot::Clip*> clips;
    const std::vector<bool> isUsed = shoot.usedWholes();
    double channelSeconds = 0;
    for (const MediaAsset& recording : shoot.input.recordings) {
        const auto placed = shoot.recordingByID.find(recording.id);
        if (recording.isAtmo() || !(recording.durationSeconds.value_or(0) >= leastLoneSeconds) ||
            (placed != shoot.recordingByID.end() && isUsed[shoot.wholes.firstOf[placed->second]]))
            continue;
        if (clips.empty()) clips = clipsToHear(shoot);
        channelSeconds += *recording.durationSeconds * std::max(recording.channelCount.value_or(1), 1) *
                          static_cast<double>(clips.size());
        if (std::cmp_less(clips.size(), explanation::fewest) || result.size() == mostLone ||
            channelSeconds > mostChannelSeconds)
            break;
        result.push_back({&recording, clips});
    }
    return result;
}

class LoneDoubts {
  public:
    LoneDoubts(const Shoot& shoot, SyncDoubts& doubts)
        : shoot_(shoot), doubts_(doubts), rate_(rateOfLabels(shoot)) {}

    void add() {
        for (const Lone& lone : loneRecordings(shoot_)) {
            std::vector<double> starts; // of the recording, on the axis of the clips
            double first = 0;
            for (const Shoot::Clip* clip : lone.clips)
                if (const HeardClaim* heard = heardClaim(shoot_, lone.claim(*clip));
                    heard != nullptr && heard->offsetSeconds) {
                    const double start = likelyRange(*clip).startSeconds + *heard->offsetSeconds;
                    if (starts.empty()) first = start;
                    starts.push_back(start - first);
                }
            if (const auto agreed = agreementOf(std::move(starts), explanation::fewest, 0))
                tell(*lone.recording, first + agreed->seconds, agreed->count);
        }
    }

  private:
    void tell(const MediaAsset& recording, double start, std::ptrdiff_t count) {
        const double end = start + *recording.durationSeconds;
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (clip.place && likelyRange(clip).startSeconds < end && likelyRange(clip).endSeconds > start)
                clips.push_back(&clip);
        const std::string name = shoot_.nameOf(recording);
        addCardDoubt(doubts_,
                     {SyncDoubt::Kind::constantOffset,
                      name + " is matched to no clip, and the microphones of the cameras heard it in " +
                          counted(count, "clip", "clips") + ": by these it began at " + timeOfDayText(start) +
                          whyElsewhere(recording, start),
                      cure(recording, start)},
                     clips);
    }
    const Recording* placed(const MediaAsset& recording) const {
        const auto found = shoot_.recordingByID.find(recording.id);
        return found != shoot_.recordingByID.end() ? &shoot_.recordings[found->second] : nullptr;
    }
    std::string whyElsewhere(const MediaAsset& recording, double start) const {
        const Recording* known = placed(recording);
        if (known == nullptr) return ", and it has no timecode";
        const auto day = clipDay(start);
        std::string text = ", and it says " + timeOfDayText(known->place.range.startSeconds);
        if (known->place.day && day && known->place.day != day)
            text += " of " + dayText(*known->place.day) + " where the clips are of " + dayText(*day);
        return text;
    }
    /// The day of the first clip after that moment.
    std::optional<long> clipDay(double start) const {
        for (const Shoot::Clip& clip : shoot_.clips)
            if (clip.place && likelyRange(clip).startSeconds >= start) return clip.likelyDay();
        return std::nullopt;
    }
    DoubtCure cure(const MediaAsset& recording, double start) const {
        DoubtCure byHand = "attach it by hand to the clips that shall have it";
        const Recording* known = placed(recording);
        if (known == nullptr) return byHand;
        // Only the time of day: a date has an option of its own.
        const double offset =
            heardClock(std::remainder(start - known->place.range.startSeconds, secondsADay), rate_).seconds;
        const auto day = clipDay(start);
        std::vector<CureOption> options;
        if (std::abs(offset) >= leastByHandSeconds)
            options.push_back({CureOption::Kind::soundOffset,
                               offsetText(offset + shoot_.input.rules.soundOffsetSeconds, rate_)});
        if (known->place.day && day && known->place.day != day)
            options.push_back({CureOption::Kind::soundDate, dayText(*day)});
        if (options.empty()) return byHand;
        const std::size_t number = shoot_.recordingByID.at(recording.id);
        const Card card{std::string(folderOf(recording)), known->place.day, {number}};
        const OffsetCure scan(shoot_, rate_);
        return DoubtCure(CureWay{std::move(options)}).in(scan.scanOfRecordings(card, false)) + ", or " +
               byHand + scan.forOtherSound(card);
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
    TimecodeFrameRate rate_;
};

} // namespace

void addLoneClaims(const Shoot& shoot, std::vector<SoundClaim>& toHear) {
    for (const Lone& lone : loneRecordings(shoot))
        for (const Shoot::Clip* clip : lone.clips)
            if (heardClaim(shoot, lone.claim(*clip)) == nullptr) toHear.push_back(lone.claim(*clip));
}

void addLoneRecordings(const Shoot& shoot, SyncDoubts& doubts) {
    if (shoot.input.heardClaims != nullptr) LoneDoubts(shoot, doubts).add();
}

} // namespace orvane
