#include "OrvaneSyncCore/Services/Matching/OwnDays.h"

#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"

#include <algorithm>
#include <string_view>

namespace orvane {

namespace {

bool isDatedByHeader(const FilePlace& place) { return !place.day && place.isHeaderClose; }

/// Several cards of one camera lie in it.
std::string_view folderAbove(const MediaAsset& video) {
    const std::string_view folder = folderPath(video);
    return folder.substr(0, folder.find_last_of('/', folder.size() - 2) + 1);
}

bool hasOtherDays(const std::vector<Meeting>& meetings) {
    return std::ranges::any_of(meetings, &Meeting::isOfOtherDay);
}

} // namespace

OwnDays::Card OwnDays::cardOf(const Meeting& meeting) const {
    const Recording& recording = recordings_[meeting.recording];
    return {folderPath(*recording.asset), *recording.place.day};
}

bool OwnDays::hasAllOfItsDay(const FilePlace& place, const std::vector<Meeting>& meetings) const {
    constexpr double lateByHandSeconds = 1;
    std::vector<SyncEngine::TCRange> own;
    for (const Meeting& meeting : meetings) {
        const FilePlace& sound = recordings_[meeting.recording].place;
        if (meeting.isOfOtherDay || !sound.day) continue;
        const double start = place.range.startSeconds + meeting.offsetSeconds;
        own.push_back({start, start + sound.range.durationSeconds()});
    }
    return coveredSeconds(place.range, std::move(own)) >= place.range.durationSeconds() - lateByHandSeconds;
}

void OwnDays::learn(const MediaAsset& video, const FilePlace& place, const std::vector<Meeting>& meetings) {
    const auto day = place.knownDay();
    if (!day || meetings.empty()) return;
    for (const Meeting& meeting : meetings)
        if (!meeting.isOfOtherDay && recordings_[meeting.recording].place.day == day)
            soundOfOwnDay_.insert(cardOf(meeting));
    if (!isDatedByHeader(place)) return;
    Clips& clips = clips_[{folderAbove(video), *day}];
    const bool hasOwn = hasAllOfItsDay(place, meetings), hasOthers = hasOtherDays(meetings);
    if (hasOwn && !hasOthers) ++clips.ofOwnDay;
    if (!hasOwn && hasOthers) clips.lacksOwn = true;
}

void OwnDays::leaveOutOthers(const MediaAsset& video, const FilePlace& place,
                             std::vector<Meeting>& meetings) const {
    constexpr int fewest = 3; // two may lie under another day's sound by chance
    if (!isDatedByHeader(place) || !hasOtherDays(meetings)) return;
    const auto clips = clips_.find({folderAbove(video), *place.headerDay});
    if (clips == clips_.end() || clips->second.ofOwnDay < fewest || clips->second.lacksOwn ||
        !hasAllOfItsDay(place, meetings))
        return;
    std::erase_if(meetings, [&](const Meeting& meeting) {
        return meeting.isOfOtherDay && soundOfOwnDay_.contains(cardOf(meeting));
    });
}

} // namespace orvane
