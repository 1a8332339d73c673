#include "OrvaneSyncCore/Services/Matching/OwnDays.h"

#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"
#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

constexpr int fewest = 3; // two may be under another day's sound by chance

bool isDatedByHeader(const FilePlace& place) { return !place.day && place.isHeaderClose; }

bool hasOtherDays(const std::vector<Meeting>& meetings) {
    return std::ranges::any_of(meetings, &Meeting::isOfOtherDay);
}

} // namespace

OwnDays::OwnDays(const std::vector<Recording>& recordings)
    : recordings_(recordings), hasOwnClip_(recordings.size()) {}

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
    learnCamera(video, place, meetings);
    if (!day || meetings.empty()) return;
    for (const Meeting& meeting : meetings)
        if (!meeting.isOfOtherDay && !hasOwnClip_[meeting.recording] &&
            recordings_[meeting.recording].place.day == day) {
            soundOfOwnDay_.insert(cardOf(meeting));
            hasOwnClip_[meeting.recording] = true;
        }
    if (!isDatedByHeader(place)) return;
    Clips& clips = clips_[{folderPath(video), *day}];
    const bool hasOwn = hasAllOfItsDay(place, meetings), hasOthers = hasOtherDays(meetings);
    if (hasOwn && !hasOthers) ++clips.ofOwnDay;
    if (hasOwn && hasOthers) ++clips.ofBothDays;
    if (!hasOwn && hasOthers) clips.lacksOwn = true;
}

void OwnDays::learnCamera(const MediaAsset& video, const FilePlace& place,
                          const std::vector<Meeting>& meetings) {
    if (place.day) return; // such a clip has no sound of another day that it could lose
    const auto day = place.knownDay();
    const bool hasSound = day && !meetings.empty();
    filmed_.push_back({&video, day, place.range.startSeconds < secondsADay / 2, hasSound,
                       hasSound && hasAllOfItsDay(place, meetings)});
}

const std::map<OwnDays::CameraName, OwnDays::Camera>& OwnDays::cameras() const {
    if (soundDays_.empty())
        for (const Recording& recording : recordings_)
            if (recording.place.day) soundDays_[folderPath(*recording.asset)].insert(*recording.place.day);
    for (const Filmed& clip : std::exchange(filmed_, {})) {
        Camera& camera = cameras_[{folderPath(*clip.video), namePattern(*clip.video)}];
        if (!clip.day) {
            camera.hasUndated = true;
            continue;
        }
        camera.days.insert(*clip.day);
        if (!clip.hasSound) continue;
        HalfDay& half = camera.halves[{*clip.day, clip.isBeforeNoon}];
        ++half.clips;
        half.ofOwnDay += clip.hasOwnSound ? 1 : 0;
    }
    return cameras_;
}

/// Whether the camera's date and those of the recordings are right. If one of them is a day off, the camera
/// has clips of a day without recordings, or of none of a day with recordings. A recorder that keeps the date
/// of the evening after midnight, or whose clock is 12 hours off, is wrong in one half of the day.
bool OwnDays::isRightAbout(const Camera& camera, long day, std::string_view soundFolder) const {
    constexpr double mostly = 0.6;
    const auto recorded = soundDays_.find(soundFolder);
    if (camera.hasUndated || recorded == soundDays_.end() || recorded->second != camera.days) return false;
    int ofDay = 0;
    for (const auto& [when, half] : camera.halves) {
        if (half.clips >= fewest && half.ofOwnDay < mostly * half.clips) return false;
        ofDay += when.first == day ? half.ofOwnDay : 0;
    }
    return ofDay >= fewest;
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
    if (!isDatedByHeader(place) || !hasOtherDays(meetings)) return;
    const auto clips = clips_.find({folderPath(video), *place.headerDay});
    const bool isCardConfirmed = clips != clips_.end() && clips->second.ofOwnDay > 0 &&
                                 !clips->second.lacksOwn && hasAllOfItsDay(place, meetings) &&
                                 confirmedBeside(clips->first) >= fewest &&
                                 clips->second.ofOwnDay >= clips->second.ofBothDays;
    const auto& known = cameras();
    const auto camera = known.find({folderPath(video), namePattern(video)});
    std::erase_if(meetings, [&](const Meeting& meeting) {
        if (!meeting.isOfOtherDay) return false;
        const Card card = cardOf(meeting);
        return (isCardConfirmed && soundOfOwnDay_.contains(card)) ||
               (hasOwnClip_[meeting.recording] && camera != known.end() &&
                isRightAbout(camera->second, *place.headerDay, card.first));
    });
}

} // namespace orvane
