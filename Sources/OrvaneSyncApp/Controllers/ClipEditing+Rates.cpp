#include "OrvaneSyncApp/Controllers/ClipEditing.h"

#include "OrvaneSyncCore/Models/OffspeedDetector.h"
#include "Timecode/ExactRate.h"

#include <cmath>
#include <unordered_map>
#include <utility>

namespace orvane {

namespace {

/// What the sensor rate that the editor gives says about the clip.
OffspeedConfidence confidence(double sensor, double project) {
    if (!(project > 0)) return OffspeedConfidence::confirmed(false, 1.0);
    return OffspeedConfidence::confirmed(OffspeedDetector::ratesDifferSignificantly(sensor, project),
                                         sensor / project);
}

/// If the timecode counts half as many frames as the file has, and the editor gives the file's rate as the
/// sensor rate, the clip is meant to be shown at the rate of the timecode.
bool isShownAtHalfSpeed(const MediaAsset& video, double sensor) {
    return video.timecodeFrameRate && !OffspeedDetector::ratesDifferSignificantly(sensor, video.frameRate) &&
           OffspeedDetector::isHalfRate(
               timecodeRate::frameRateForRealTimeCalculation(*video.timecodeFrameRate), video.frameRate);
}

} // namespace

void ClipEditing::setManualSensorFrameRate(UUID groupID, std::optional<double> fps) {
    if (work_.unlockedGroup(groupID) == nullptr || (fps && !std::isfinite(*fps))) return;
    const double inferred = inferredProjectFrameRate(groupID);
    work_.edit(groupID, [&](SyncGroup& own) {
        MediaAsset& video = own.video;
        video.sensorFrameRate = fps;
        if (!fps) {
            video.projectFrameRate.reset();
            video.offspeedConfidence = OffspeedConfidence::suspectedUnconfirmed(1.0);
            return;
        }
        if (isShownAtHalfSpeed(video, *fps))
            video.projectFrameRate = timecodeRate::frameRateForRealTimeCalculation(*video.timecodeFrameRate);
        else if (!video.projectFrameRate)
            video.projectFrameRate = inferred;
        video.offspeedConfidence = confidence(*fps, *video.projectFrameRate);
    });
    smartAudio_.caches().removeRenderedAudio(groupID);
}

double ClipEditing::inferredProjectFrameRate(UUID excluding) const {
    work_.notices.assertOnMainThread();
    constexpr double withoutAnyOther = 24.0;
    struct Votes {
        std::size_t count = 0;
        std::size_t firstAt = 0;
    };
    std::unordered_map<double, Votes> votes;
    double winner = withoutAnyOther;
    Votes most;
    for (std::size_t i = 0; i < work_.syncGroups().size(); ++i) {
        const SyncGroup& group = work_.syncGroups()[i];
        const double rate = exactRateValue(group.video.projectFrameRate.value_or(0));
        if (group.id == excluding || !(rate > 0)) continue;
        Votes& own = votes.try_emplace(rate, Votes{0, i}).first->second;
        ++own.count;
        if (own.count > most.count || (own.count == most.count && own.firstAt < most.firstAt)) {
            most = own;
            winner = rate;
        }
    }
    return winner;
}

} // namespace orvane
