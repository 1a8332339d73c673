#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClipClaims.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/CureWords.h"
#include "OrvaneSyncCore/Services/Diagnosis/DatedSound.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtFinders.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using Kind = SyncDoubt::Kind;

constexpr double noonSeconds = secondsADay / 2;

/// The recordings of a folder that begin before noon, or after it. A recorder that keeps the date of the
/// evening after midnight, and one whose clock is 12 hours off beside a right timecode, have a wrong date in
/// one half of the day only.
class HalfDayDates {
  public:
    HalfDayDates(const Shoot& shoot, SyncDoubts& doubts) : shoot_(shoot), doubts_(doubts) {}

    void add() {
        if (shoot_.input.rules.soundDay) return;
        std::map<std::pair<std::string_view, bool>, std::vector<std::size_t>> halves;
        for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
            if (shoot_.wholes.isFirst(i) && placeOf(i).day)
                halves[{folderOf(*shoot_.recordings[i].asset), isBeforeNoon(placeOf(i))}].push_back(i);
        for (const auto& [half, recordings] : halves) {
            platform::throwIfStopped(shoot_.stop);
            const auto other = halves.find({half.first, !half.second});
            addHalf(half.first, half.second, recordings,
                    other != halves.end() ? other->second : Recordings());
        }
    }

  private:
    using Recordings = std::vector<std::size_t>;
    struct Fit {
        std::vector<const Shoot::Clip*> clips = {};      ///< in their order
        std::set<std::pair<long, long>> recordings = {}; ///< day and start: channels count once
    };

    const FilePlace& placeOf(std::size_t recording) const { return shoot_.wholes.places[recording]; }
    static bool isBeforeNoon(const FilePlace& place) { return place.range.startSeconds < noonSeconds; }

    /// The clips of that half of the day that have their sound in the folder, or none.
    std::vector<const Shoot::Clip*> clipsOf(std::string_view folder, bool isMorning) const {
        std::vector<const Shoot::Clip*> clips;
        for (const Shoot::Clip& clip : shoot_.clips)
            if (!clip.isDecided && clip.place && clip.likelyDay() && isBeforeNoon(*clip.place) == isMorning &&
                clip.group->matchStatus.kind != MatchStatus::Kind::mos &&
                (clip.primary ? folderOf(*shoot_.recordings[*clip.primary].asset) == folder
                              : clip.group->audioMatches.empty()))
                clips.push_back(&clip);
        return clips;
    }
    Fit fitOf(const std::vector<const Shoot::Clip*>& clips, const Recordings& recordings, long days) const {
        std::map<long, Cover> covers;
        for (const std::size_t i : recordings) covers[*placeOf(i).day + days].add(placeOf(i).range, i);
        for (auto& [day, cover] : covers) cover.finish();
        Fit fit;
        for (const Shoot::Clip* clip : clips) {
            const auto cover = covers.find(*clip->likelyDay());
            const auto found = cover != covers.end() ? cover->second.of(clip->place->range) : std::nullopt;
            if (!found) continue;
            fit.clips.push_back(clip);
            fit.recordings.emplace(*placeOf(*found).day, std::lround(placeOf(*found).range.startSeconds));
        }
        return fit;
    }
    bool isHeardNow(const Shoot::Clip& clip) const {
        if (!clip.primary) return false;
        return shoot_.recordings[*clip.primary].place.day == clip.likelyDay() &&
               isRecordingHeard(shoot_, clip, clip.group->audioMatches.front());
    }
    /// The only recording that covers the clip with its date moved.
    std::optional<UUID> recordingOf(const Shoot::Clip& clip, const Recordings& recordings, long days) const {
        std::optional<std::size_t> found;
        for (const std::size_t i : recordings) {
            if (*placeOf(i).day + days != clip.likelyDay() || !covers(placeOf(i).range, clip.place->range))
                continue;
            constexpr double rounding = 0.01; // between the channels of a take
            if (found &&
                std::abs(placeOf(*found).range.startSeconds - placeOf(i).range.startSeconds) > rounding)
                return std::nullopt;
            if (!found) found = i;
        }
        if (!found) return std::nullopt;
        const double into = clip.place->range.startSeconds - placeOf(*found).range.startSeconds;
        return shoot_.recordings[shoot_.wholes.partAt(*found, into)].asset->id;
    }

    /// Whether most clips of that half of the day have their sound by the dates as they are.
    bool isInPlace(std::string_view folder, bool isMorning, const Recordings& recordings) const {
        const auto clips = clipsOf(folder, isMorning);
        const Fit now = fitOf(clips, recordings, 0);
        return now.clips.size() >= fewestOfADate &&
               static_cast<double>(now.clips.size()) >=
                   explanation::majority * static_cast<double>(clips.size());
    }

    /// `others`: the recordings of the other half. If no clip of this half has sound, they show that not all
    /// recordings have a wrong date.
    void addHalf(std::string_view folder, bool isMorning, const Recordings& recordings,
                 const Recordings& others) {
        const auto clips = clipsOf(folder, isMorning);
        const Fit now = fitOf(clips, recordings, 0);
        constexpr double clearly = 1.5;
        const auto isClearly = [](std::size_t more, std::size_t less) {
            return static_cast<double>(more) >= clearly * static_cast<double>(less);
        };
        if (!isClearly(clips.size(), now.clips.size())) return; // no other day fits clearly more clips
        long days = 1;
        Fit moved = fitOf(clips, recordings, days);
        if (Fit other = fitOf(clips, recordings, -1); other.clips.size() > moved.clips.size()) {
            moved = std::move(other);
            days = -1;
        }
        // Most clips of days at the same hours fit whatever day is tried, by the same recordings. A day that
        // is right loses no sound.
        if (moved.clips.size() < 2 * fewestOfADate || !isClearly(moved.clips.size(), now.clips.size()) ||
            !std::ranges::includes(moved.clips, now.clips) ||
            !isClearly(moved.recordings.size(), now.recordings.size()) ||
            static_cast<double>(moved.clips.size()) <
                explanation::majority * static_cast<double>(clips.size()) ||
            (now.clips.empty() && !isInPlace(folder, !isMorning, others)) ||
            std::ranges::any_of(clips, [&](const Shoot::Clip* clip) { return isHeardNow(*clip); }))
            return;
        addCardDoubt(doubts_,
                     {Kind::otherDateFits,
                      "the recordings in '" + std::string(folder) + "' from " +
                          (isMorning ? "before noon" : "after noon") + " are dated a day too " +
                          (days > 0 ? "early" : "late") + ": dated right, " +
                          std::to_string(moved.clips.size()) + " of " +
                          counted(clips.size(), "clip", "clips") + " of these hours have sound, and " +
                          std::to_string(now.clips.size()) + " as they are",
                      cureWords::asHeard("choose the recordings of that day", "'choice'") +
                          cureWords::lock("; lock the clips whose sound is right")},
                     clips);
        for (const Shoot::Clip* clip : clips)
            if (const auto recording = recordingOf(*clip, recordings, days))
                doubts_.byGroup[clip->group->id].back().suggestion =
                    SyncDoubt::Suggestion{.recordingID = recording, .isAlone = true};
    }

    const Shoot& shoot_;
    SyncDoubts& doubts_;
};

} // namespace

void addHalfDayDates(const Shoot& shoot, SyncDoubts& doubts) { HalfDayDates(shoot, doubts).add(); }

} // namespace orvane
