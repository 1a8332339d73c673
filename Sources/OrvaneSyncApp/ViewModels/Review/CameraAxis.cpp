#include "OrvaneSyncApp/ViewModels/Review/CameraAxis.h"

#include "OrvaneSyncCore/Utilities/ClusterTimelineAxis.h"

#include <algorithm>

namespace orvane {

CameraAxis CameraAxis::of(const ClusterEngineBag& bag, const SyncGroupList& clips) {
    CameraAxis axis;
    for (const auto& [id, label] : bag.memberLabels()) {
        const double start = -bag.memberSyncOffsets().at(id);
        double length = bag.engines().at(id)->playhead().clipDuration;
        const SyncGroup* clip = clips.find(id);
        if (length <= 0 && clip != nullptr) length = clip->video.durationSeconds.value_or(0);
        axis.cameras.push_back({id, label, start, start + length});
    }
    if (axis.cameras.empty()) return axis;
    axis.startSeconds = std::ranges::min(axis.cameras, {}, &Camera::startSeconds).startSeconds;
    axis.endSeconds = std::ranges::max(axis.cameras, {}, &Camera::endSeconds).endSeconds;
    return axis;
}

double CameraAxis::x(double seconds, double width) const {
    return ClusterTimelineAxis::x(seconds - startSeconds, width, endSeconds - startSeconds);
}

double CameraAxis::seconds(double x, double width) const {
    return startSeconds + ClusterTimelineAxis::audioClockSeconds(x, width, endSeconds - startSeconds);
}

std::optional<double> sharedPlayhead(const ClusterEngineBag& bag) {
    const auto leader = bag.leaderID();
    if (!leader) return std::nullopt;
    std::optional<double> within, latestEnd, earliestStart;
    for (const auto& [id, label] : bag.memberLabels()) {
        const VideoEngine& engine = *bag.engines().at(id);
        if (!engine.transport().isLoaded) continue;
        const PlayheadState& playhead = engine.playhead();
        const double at = playhead.seconds() - bag.memberSyncOffsets().at(id);
        if (playhead.seconds() >= playhead.clipDuration)
            latestEnd = std::max(latestEnd.value_or(at), at);
        else if (playhead.seconds() <= 0)
            earliestStart = std::min(earliestStart.value_or(at), at);
        else if (!within || id == *leader)
            within = at;
    }
    if (within) return within;
    const double ofLeader =
        bag.engines().at(*leader)->playhead().seconds() - bag.memberSyncOffsets().at(*leader);
    return latestEnd ? latestEnd : earliestStart ? earliestStart : ofLeader;
}

CameraRun cameraRun(const ClusterEngineBag& bag, const UUID& camera, double sharedSeconds) {
    const auto engine = bag.engines().find(camera);
    const auto offset = bag.memberSyncOffsets().find(camera);
    if (engine == bag.engines().end() || offset == bag.memberSyncOffsets().end() ||
        !engine->second->transport().isLoaded)
        return CameraRun::running;
    const PlayheadState& playhead = engine->second->playhead();
    const double at = sharedSeconds + offset->second, rounding = playhead.frameLength().seconds() / 2;
    if (at < -rounding) return CameraRun::notYet;
    return at > playhead.clipDuration + rounding ? CameraRun::ended : CameraRun::running;
}

} // namespace orvane
