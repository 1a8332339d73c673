#include "OrvaneSyncCore/Services/Diagnosis/UnmatchedReasons.h"

#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <cstdlib>
#include <optional>
#include <utility>

namespace orvane {

struct UnmatchedReasons::Positioned {
    /// Files by their time of day, whatever their days.
    class ByTimeOfDay {
      public:
        void add(const FilePlace& place) {
            index_.add(place.range, places_.size());
            places_.push_back(place);
        }
        void finish() { index_.finish(); }
        bool isEmpty() const { return places_.empty(); }

        struct Nearest {
            std::optional<long> day;
            long daysApart; ///< from the time of the range on its own day
        };
        /// Of the files that overlap the range in time of day, also across midnight, the nearest to the given
        /// day; a file without a day is preferred.
        std::optional<Nearest> nearest(const FilePlace& place, const std::optional<long>& day) const {
            std::optional<Nearest> best;
            std::vector<RangeIndex::Hit> hits;
            for (const long later : {0L, 1L, -1L}) {
                hits.clear();
                index_.appendOverlapping(moved(place.range, static_cast<double>(later) * secondsADay), hits);
                for (const RangeIndex::Hit& hit : hits) {
                    const auto& own = places_[hit.item].day;
                    const long apart = own && day ? std::abs(*own + later - *day) : 0;
                    if (!best || apart < best->daysApart) best = Nearest{own, apart};
                }
            }
            return best;
        }

      private:
        RangeIndex index_;
        std::vector<FilePlace> places_;
    };

    /// Whether the file at that time is of another day than `day`.
    bool isOther(const ByTimeOfDay::Nearest& file, const std::optional<long>& day) const {
        const bool isSameDayOnly = places.rules().days == MatchingDays::same;
        return file.day && day && (file.daysApart != 0 || (isSameDayOnly && file.day != day));
    }

    Places places;
    bool hasRecordings = false;
    ByTimeOfDay sounds = {}, clips = {};
};

UnmatchedReasons::UnmatchedReasons(SyncGroupList groups, std::function<std::vector<MediaAsset>()> recordings,
                                   const MatchRules& rules)
    : groups_(std::move(groups)), recordings_(std::move(recordings)), rules_(rules) {}
UnmatchedReasons::~UnmatchedReasons() = default;

UnmatchedReasons::Positioned& UnmatchedReasons::positioned() {
    if (positioned_) return *positioned_;
    const std::vector<MediaAsset> recordings = recordings_();
    positioned_ = std::make_unique<Positioned>(Positioned{Places(rules_), !recordings.empty()});
    for (const Recording& recording : recordingsAmong(recordings, positioned_->places, {}))
        positioned_->sounds.add(recording.place);
    for (const SyncGroup& group : groups_) positioned_->places.learn(group.video);
    for (const SyncGroup& group : groups_)
        if (auto place = positioned_->places.of(group.video)) {
            place->day = place->likelyDay();
            positioned_->clips.add(*place);
        }
    positioned_->sounds.finish();
    positioned_->clips.finish();
    return *positioned_;
}

bool nothingIsKnown(const MediaAsset& asset) {
    return !asset.durationSeconds && !asset.width && !asset.sampleRate && !asset.startTimecodeString;
}

namespace {

/// For a file of which nothing is known.
std::string unreadText(const MediaAsset& file) {
    if (file.fileSizeBytes == 0) return "the file is empty";
    return file.heldShare ? "the file is cut off" : "the file can't be read";
}

} // namespace

std::string UnmatchedReasons::ofClip(const SyncGroup& group) {
    const MediaAsset& video = group.video;
    if (group.matchStatus.kind == MatchStatus::Kind::ambiguous)
        return "several recordings, none of them clearly";
    if (nothingIsKnown(video)) return unreadText(video);
    if (!video.startTimecodeString) return "no timecode";
    if (!video.durationSeconds) return "no length";
    Positioned& all = positioned();
    if (!all.hasRecordings) return "no recordings given";
    if (all.sounds.isEmpty()) return "no recording has timecode";
    const auto place = all.places.of(video);
    const auto day = place ? place->likelyDay() : std::nullopt;
    const auto sound = place ? all.sounds.nearest(*place, day) : std::nullopt;
    if (!sound) return "no sound at that time";
    return all.isOther(*sound, day) ? "sound at that time is of " + dayText(*sound->day)
                                    : "the sound at that time is not attached";
}

std::string UnmatchedReasons::ofRecording(const MediaAsset& recording) {
    if (recording.isAtmo()) return "room tone or wild track";
    if (nothingIsKnown(recording)) return unreadText(recording);
    if (!recording.startTimecodeString && !recording.bextTimeReference) return "no timecode";
    Positioned& all = positioned();
    const auto place = all.places.of(recording);
    const auto clip = place ? all.clips.nearest(*place, place->day) : std::nullopt;
    if (!clip) return "no clip at that time";
    return all.isOther(*clip, place->day) ? "the clip at that time is of " + dayText(*clip->day)
                                          : "not attached to the clip at that time";
}

} // namespace orvane
