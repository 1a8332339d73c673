#pragma once

#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// The days that sound confirms for clips that only their headers date. For such a clip, a recording of
/// another day beside the sound of its own day belongs to the other day. Reads the recordings that it was
/// made from.
class OwnDays {
  public:
    explicit OwnDays(const std::vector<Recording>& recordings);

    /// Adds a clip and what it meets, by `DayLine`. The videos must live as long as this object.
    void learn(const MediaAsset& video, const FilePlace& place, const std::vector<Meeting>& meetings);
    /// Removes recordings of another day in two cases.
    ///
    /// In the first one, four conditions are met. Sound of the header's day covers all of the clip. Three
    /// clips of that day met sound of that day only: at least one clip of the same card, the others of it or
    /// of cards beside it. None of these cards has a clip that lacks this sound and has another day's. The
    /// recording's own card meets clips of its own day.
    ///
    /// In the second one, the camera has clips of exactly the days of the recording's folder, most of them
    /// have sound of their own day in each half of each day, and the recording has a clip of its own day.
    void leaveOutOthers(const MediaAsset& video, const FilePlace& place,
                        std::vector<Meeting>& meetings) const;

  private:
    using Card = std::pair<std::string_view, long>; ///< folder and day
    struct Clips {
        int ofOwnDay = 0;   ///< clips with sound of that day only
        int ofBothDays = 0; ///< clips that also have sound of another day
        bool lacksOwn = false;
    };
    /// The clips of one folder whose names differ in their numbers only.
    using CameraName = std::pair<std::string_view, std::string>;
    struct HalfDay {
        int clips = 0;    ///< that met any sound
        int ofOwnDay = 0; ///< those that sound of their own day covers
    };
    struct Camera {
        std::map<std::pair<long, bool>, HalfDay> halves; ///< by day, and whether the clips begin before noon
        std::set<long> days;
        bool hasUndated = false; ///< clips whose day is not known
    };
    struct Filmed {
        const MediaAsset* video;
        std::optional<long> day;
        bool isBeforeNoon;
        bool hasSound, hasOwnSound; ///< as those of HalfDay
    };
    void learnCamera(const MediaAsset& video, const FilePlace& place, const std::vector<Meeting>& meetings);
    /// Made when the first clip needs them, as the patterns of names take most of the time of matching; then
    /// `soundDays_` is made too.
    const std::map<CameraName, Camera>& cameras() const;
    bool isRightAbout(const Camera& camera, long day, std::string_view soundFolder) const;
    int confirmedBeside(const Card& card) const;
    bool hasAllOfItsDay(const FilePlace& place, const std::vector<Meeting>& meetings) const;
    Card cardOf(const Meeting& meeting) const;

    const std::vector<Recording>& recordings_;
    std::map<Card, Clips> clips_;
    std::set<Card> soundOfOwnDay_;
    mutable std::vector<Filmed> filmed_; ///< that `cameras_` does not contain yet
    mutable std::map<CameraName, Camera> cameras_;
    mutable std::map<std::string_view, std::set<long>> soundDays_; ///< by folder
    std::vector<bool> hasOwnClip_; ///< by recording: a clip of its day meets it
};

} // namespace orvane
