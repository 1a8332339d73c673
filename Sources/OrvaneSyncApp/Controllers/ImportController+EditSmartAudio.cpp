#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

namespace {

constexpr double shortestOverrideSeconds = 0.1;

/// The overrides without the stretch from `low` to `high`: what sticks out on either side stays.
std::vector<BlockOverride> cleared(const std::vector<BlockOverride>& overrides, double low, double high) {
    std::vector<BlockOverride> result;
    for (const BlockOverride& one : overrides) {
        if (one.endSeconds <= low || one.startSeconds >= high) {
            result.push_back(one);
            continue;
        }
        if (one.startSeconds < low) result.push_back({one.id, one.startSeconds, low, one.trackIndex});
        if (high < one.endSeconds) result.push_back({UUID::random(), high, one.endSeconds, one.trackIndex});
    }
    return result;
}

} // namespace

platform::Task ImportController::addBlockOverride(UUID groupID, double startSeconds, double endSeconds,
                                                  int trackIndex) {
    const auto [low, high] = std::minmax(startSeconds, endSeconds);
    if (!std::isfinite(low) || !std::isfinite(high) || high - low < shortestOverrideSeconds)
        return platform::Task::ended();
    const BlockOverride added{UUID::random(), low, high, trackIndex};
    const bool found = edit(groupID, [&](SyncGroup& group) {
        auto& overrides = group.manualBlockOverrides;
        overrides = cleared(overrides, added.startSeconds, added.endSeconds);
        overrides.push_back(added);
        std::ranges::stable_sort(overrides, {}, &BlockOverride::startSeconds);
    });
    return found ? reanalyseIfKnown(groupID) : platform::Task::ended();
}

platform::Task ImportController::removeBlockOverride(UUID groupID, UUID overrideID) {
    const bool found = edit(groupID, [&](SyncGroup& group) {
        std::erase_if(group.manualBlockOverrides,
                      [&](const BlockOverride& one) { return one.id == overrideID; });
    });
    return found ? reanalyseIfKnown(groupID) : platform::Task::ended();
}

void ImportController::setMasterGain(UUID groupID, double gainDB, bool automatic) {
    if (!std::isfinite(gainDB)) return;
    edit(groupID, [&](SyncGroup& group) {
        group.masterGainDB = gainDB;
        group.masterGainAuto = automatic;
    });
}

void ImportController::resetMasterGain(UUID groupID) {
    edit(groupID, [&](SyncGroup& group) {
        group.masterGainAuto = true;
        if (group.measuredLUFS) group.masterGainDB = automaticMasterGainDB(*group.measuredLUFS);
    });
}

/// All that Smart Audio knows of the clip, and all that was rendered from it.
void ImportController::removeSmartAudioCaches(UUID groupID) {
    ++timesForgotten_[groupID];
    smartAudio_.results.erase(groupID);
    smartAudio_.soloMonitorTracks.erase(groupID);
    smartAudio_.soloMonitorURLs.erase(groupID);
    removeRenderedAudio(groupID);
}

void ImportController::removeRenderedAudio(UUID groupID) {
    smartAudio_.mixdownURLs.erase(groupID);
    smartAudio_.viProcessedURLs.erase(groupID);
    notify(ImportField::smartAudio);
}

/// Previews of Voice Isolation stay: they depend on nothing that undoing brings back.
void ImportController::invalidateCachesAfterUndo() {
    ++timesAllForgotten_;
    smartAudio_.results.clear();
    smartAudio_.mixdownURLs.clear();
    smartAudio_.soloMonitorURLs.clear();
    smartAudio_.soloMonitorTracks.clear();
    notify(ImportField::smartAudio);
}

platform::Task ImportController::reanalyseAll() {
    SyncGroupList analysed = syncGroups_.filtered(
        [this](const SyncGroup& group) { return smartAudio_.results.contains(group.id) && !group.isMOS(); });
    return analyseEach(weak_from_this(), std::move(analysed), newRunForOneClip(false), Loudness::measure);
}

} // namespace orvane
