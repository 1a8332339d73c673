#include "OrvaneSyncCore/Services/Matching/OwnDays.h"

#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"

#include <algorithm>
#include <string_view>

namespace orvane {

namespace {

bool isDatedByHeader(const FilePlace& place) { return !place.day && place.isHeaderClose; }

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
    const double length = place.range.durationSeconds();
    return coveredSeconds(place.range, std::move(own)) >= std::max(length - lateByHandSeconds, length / 2);
}

void OwnDays::learn(const MediaAsset& video, const FilePlace& place, const std::vector<Meeting>& meetings) {
    const auto day = place.knownDay();
    if (!day || meetings.empty()) return;
    for (const Meeting& meeting : meetings)
        if (!meeting.isOfOtherDay && recordings_[meeting.recording].place.day == day)
            soundOfOwnDay_.insert(cardOf(meeting));
    if (!isDatedByHeader(place)) return;
    Clips& clips = clips_[{folderPath(video), *day}];
    const bool hasOwn = hasAllOfItsDay(place, meetings), hasOthers = hasOtherDays(meetings);
    if (hasOwn && !hasOthers) ++clips.ofOwnDay;
    if (hasOwn && hasOthers) ++clips.ofBothDays;
    if (!hasOwn && hasOthers) clips.lacksOwn = true;
}

/// The number of clips of the card's day that met sound of that day only, in the card's folder and in the
/// folders beside it: a small card may have fewer than three of them.
int OwnDays::confirmedBeside(const Card& card) const {
    const auto parent = [](std::string_view folder) { // both end with a slash
        folder.remove_suffix(1);
        return folder.substr(0, folder.rfind('/') + 1);
    };
    int count = 0;
    for (const auto& [other, clips] : clips_)
        if (other.second == card.second && !clips.lacksOwn && parent(other.first) == parent(card.first))
            count += clips.ofOwnDay;
    return count;
}

void OwnDays::leaveOutOthers(const MediaAsset& video, const FilePlace& place,
                             std::vector<Meeting>& meetings) const {
    constexpr int fewest = 3; // two may lie under another day's sound by chance
    if (!isDatedByHeader(place) || !hasOtherDays(meetings)) return;
    const auto clips = clips_.find({folderPath(video), *place.headerDay});
    if (clips == clips_.end() || clips->second.ofOwnDay == 0 || clips->second.lacksOwn ||
        !hasAllOfItsDay(place, meetings) || confirmedBeside(clips->first) < fewest ||
        clips->second.ofOwnDay < clips->second.ofBothDays)
        return;
    std::erase_if(meetings, [&](const Meeting& meeting) {
        return meeting.isOfOtherDay && soundOfOwnDay_.contains(cardOf(meeting));
    });
}

} // namespace orvane
