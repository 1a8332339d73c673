#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"

#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <unordered_map>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;
using Hit = RangeIndex::Hit;

// A day, with a tolerance of a minute for clocks that were corrected. At the end of summer time a day has 25
// hours; the next day then begins 90,000 s later and is no neighbour.
constexpr std::chrono::seconds neighbouringDay{86460};

TCRange moved(const TCRange& range, double seconds) {
    return {range.startSeconds + seconds, range.endSeconds + seconds};
}

void sortByRecording(std::vector<Meeting>::iterator first, std::vector<Meeting>::iterator last) {
    std::sort(first, last, [](const Meeting& a, const Meeting& b) { return a.recording < b.recording; });
}

/// In this order: the same day as the header's, a neighbour (the header counts in UTC), no day, another day.
int distanceOf(bool isDated, bool isSame, bool isNeighbour) {
    if (!isDated) return 2;
    if (isSame) return 0;
    return isNeighbour ? 1 : 3;
}

calendar::Day calendarDay(long sinceEpoch) {
    const std::chrono::year_month_day day{std::chrono::sys_days(std::chrono::days(sinceEpoch))};
    return {static_cast<int>(day.year()), static_cast<int>(static_cast<unsigned>(day.month())),
            static_cast<int>(static_cast<unsigned>(day.day()))};
}

} // namespace

bool isOfOtherDay(const FilePlace& clip, const FilePlace& sound, double offsetSeconds) {
    if (clip.day || !clip.isHeaderClose || !sound.day) return false;
    const double apart = static_cast<double>(*sound.day - *clip.headerDay) * secondsADay +
                         sound.range.startSeconds - clip.range.startSeconds;
    return std::abs(apart - offsetSeconds) >= 1;
}

void TimeOfDayIndex::append(const TCRange& clip, const std::vector<Recording>& recordings,
                            bool acrossMidnight, std::vector<Meeting>& meetings) const {
    std::vector<Hit> hits;
    const auto first = meetings.size();
    const auto look = [&](double shift) {
        hits.clear();
        index_.appendOverlapping(moved(clip, -shift), hits);
        for (const Hit& hit : hits) {
            const double apart = recordings[hit.item].place.range.startSeconds - clip.startSeconds;
            meetings.push_back({hit.item, hit.overlapSeconds, apart + shift});
        }
    };
    look(0);
    if (acrossMidnight) {
        const auto sameDay = meetings.size();
        look(secondsADay);
        look(-secondsADay);
        // Only a clip or a recording of almost a day meets the other twice; the meeting on its own day is
        // kept.
        if (meetings.size() > sameDay) {
            const auto own = meetings.begin() + static_cast<std::ptrdiff_t>(first);
            std::stable_sort(own, meetings.end(),
                             [](const Meeting& a, const Meeting& b) { return a.recording < b.recording; });
            meetings.erase(
                std::unique(own, meetings.end(),
                            [](const Meeting& a, const Meeting& b) { return a.recording == b.recording; }),
                meetings.end());
            return;
        }
    }
    sortByRecording(meetings.begin() + static_cast<std::ptrdiff_t>(first), meetings.end());
}

NeighbouringDays::NeighbouringDays(const std::vector<Recording>& recordings, const MatchRules& rules)
    : recordings_(recordings) {
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const auto day =
            rules.soundDay ? starts_.of(calendarDay(*recordings[i].place.day)) : recordings[i].place.shootDay;
        (day ? days_[*day] : undated_).add(recordings[i].place.range, i);
        all_.add(recordings[i].place.range, i);
        dayOf_.push_back(day);
    }
    for (auto& [day, index] : days_) index.finish();
    undated_.finish();
    all_.finish();
}

std::vector<Meeting> NeighbouringDays::of(const MediaAsset& video, const FilePlace& place) {
    std::vector<Meeting> meetings;
    const auto& day = place.shootDay;
    if (!day) {
        all_.append(place.range, recordings_, false, meetings);
        if (video.headerDate) {
            const Date headerDay = starts_.of(*video.headerDate);
            std::ranges::stable_sort(
                meetings, {}, [&](const Meeting& meeting) { return distance(meeting.recording, headerDay); });
        }
        return meetings;
    }
    const auto last = days_.upper_bound(*day + neighbouringDay);
    for (auto near = days_.lower_bound(*day - neighbouringDay); near != last; ++near)
        near->second.append(place.range, recordings_, false, meetings);
    sortByRecording(meetings.begin(), meetings.end());
    undated_.append(place.range, recordings_, false, meetings);
    return meetings;
}

int NeighbouringDays::distance(std::size_t recording, Date headerDay) const {
    const auto day = dayOf_[recording];
    return distanceOf(day.has_value(), day == headerDay,
                      day && std::chrono::abs(*day - headerDay) <= neighbouringDay);
}

DayLine::DayLine(const std::vector<Recording>& recordings, MatchingDays days)
    : recordings_(recordings), days_(days) {
    const auto dated = std::ranges::find_if(
        recordings, [](const Recording& recording) { return recording.place.day.has_value(); });
    if (dated != recordings.end()) firstDay_ = *dated->place.day;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const FilePlace& place = recordings[i].place;
        if (place.day)
            dated_.add(moved(place.range, static_cast<double>(*place.day - firstDay_) * secondsADay), i);
        else
            undated_.add(place.range, i);
        all_.add(place.range, i);
    }
    dated_.finish();
    undated_.finish();
    all_.finish();
}

std::vector<Meeting> DayLine::of(const FilePlace& clip) const {
    std::vector<Meeting> meetings;
    if (!clip.day) {
        all_.append(clip.range, recordings_, true, meetings);
        if (clip.headerDay)
            std::ranges::stable_sort(meetings, {}, [&](const Meeting& meeting) {
                return distance(meeting.recording, *clip.headerDay);
            });
        for (Meeting& meeting : meetings)
            meeting.isOfOtherDay =
                isOfOtherDay(clip, recordings_[meeting.recording].place, meeting.offsetSeconds);
        std::erase_if(meetings, [&](const Meeting& meeting) { return isLeftOut(clip, meeting); });
        return meetings;
    }
    std::vector<Hit> hits;
    dated_.appendOverlapping(moved(clip.range, static_cast<double>(*clip.day - firstDay_) * secondsADay),
                             hits);
    for (const Hit& hit : hits) {
        const FilePlace& sound = recordings_[hit.item].place;
        if (days_ == MatchingDays::same && *sound.day != *clip.day) continue;
        // Times counted from the clip's own day keep the precision that they have within a day.
        const double between = static_cast<double>(*sound.day - *clip.day) * secondsADay;
        const auto overlap = SyncEngine::overlapDuration(moved(sound.range, between), clip.range);
        if (overlap)
            meetings.push_back(
                {hit.item, *overlap, sound.range.startSeconds - clip.range.startSeconds + between});
    }
    sortByRecording(meetings.begin(), meetings.end());
    undated_.append(clip.range, recordings_, true, meetings);
    return meetings;
}

bool DayLine::isLeftOut(const FilePlace& clip, const Meeting& meeting) const {
    const auto& day = recordings_[meeting.recording].place.day;
    if (!clip.isHeaderClose || !day) return false;
    return (days_ == MatchingDays::same && day != clip.headerDay) ||
           (days_ == MatchingDays::midnight && meeting.isOfOtherDay);
}

int DayLine::distance(std::size_t recording, long headerDay) const {
    const auto day = recordings_[recording].place.day;
    return distanceOf(day.has_value(), day == headerDay, day && std::abs(*day - headerDay) <= 1);
}

WrongClocks::WrongClocks(const std::vector<Recording>& recordings, const std::vector<bool>& isMet)
    : recordings_(recordings) {
    struct Card {
        bool isOneMet = false;
        std::vector<std::size_t> recordings;
    };
    std::unordered_map<std::string_view, std::map<long, Card>> cards; // by folder and day
    for (std::size_t i = 0; i < recordings.size(); ++i)
        if (const auto day = recordings[i].place.day) {
            Card& card = cards[folderPath(*recordings[i].asset)][*day];
            card.isOneMet = card.isOneMet || isMet[i];
            card.recordings.push_back(i);
        }
    for (const auto& [folder, days] : cards)
        for (const auto& [day, card] : days)
            if (!card.isOneMet)
                for (const std::size_t i : card.recordings) days_[day].add(recordings[i].place.range, i);
    for (auto& [day, index] : days_) index.finish();
}

std::vector<Meeting> WrongClocks::of(const FilePlace& clip) const {
    std::vector<Meeting> meetings;
    if (!clip.day) return meetings;
    for (const long day : {*clip.day - 1, *clip.day + 1})
        if (const auto found = days_.find(day); found != days_.end())
            found->second.append(clip.range, recordings_, false, meetings);
    sortByRecording(meetings.begin(), meetings.end());
    return meetings;
}

} // namespace orvane
