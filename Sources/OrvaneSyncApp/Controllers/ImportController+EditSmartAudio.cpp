#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"

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

void ImportController::addBlockOverride(const UUID& groupID, double startSeconds, double endSeconds,
                                        int trackIndex) {
    const auto [low, high] = std::minmax(startSeconds, endSeconds);
    if (!std::isfinite(low) || !std::isfinite(high) || high - low < shortestOverrideSeconds) return;
    const BlockOverride added{UUID::random(), low, high, trackIndex};
    const bool found = edit(groupID, [&](SyncGroup& group) {
        auto& overrides = group.manualBlockOverrides;
        overrides = cleared(overrides, added.startSeconds, added.endSeconds);
        overrides.push_back(added);
        std::ranges::stable_sort(overrides, {}, &BlockOverride::startSeconds);
    });
    if (found) reanalyseIfKnown(groupID);
}

void ImportController::removeBlockOverride(const UUID& groupID, const UUID& overrideID) {
    const bool found = edit(groupID, [&](SyncGroup& group) {
        std::erase_if(group.manualBlockOverrides,
                      [&](const BlockOverride& one) { return one.id == overrideID; });
    });
    if (found) reanalyseIfKnown(groupID);
}

void ImportController::setMasterGain(const UUID& groupID, double gainDB, bool automatic) {
    if (!std::isfinite(gainDB)) return;
    edit(groupID, [&](SyncGroup& group) {
        group.masterGainDB = gainDB;
        group.masterGainAuto = automatic;
    });
}

void ImportController::resetMasterGain(const UUID& groupID) {
    edit(groupID, [&](SyncGroup& group) {
        group.masterGainAuto = true;
        if (group.measuredLUFS) group.masterGainDB = automaticMasterGainDB(*group.measuredLUFS);
    });
}

double ImportController::automaticMasterGainDB(double measuredLUFS) const {
    return MasterGain::gainDB(measuredLUFS, MasterGain::Target::fromUserDefaults(*settings_),
                              SmartAudioPredictor::loadingFromDisk());
}

void ImportController::removeSmartAudioCaches(const UUID& groupID) {
    if (smartAudioResults_.erase(groupID) > 0) notify(ImportField::smartAudio);
}

// Nothing is rendered yet.
void ImportController::removeRenderedAudio(const UUID& /*groupID*/) {}

// Analyses do not run yet, so that no clip was analysed before.
void ImportController::reanalyseIfKnown(const UUID& /*groupID*/) {}
void ImportController::reanalyseAllKnown() {}

void ImportController::invalidateCachesAfterUndo() {
    if (smartAudioResults_.empty()) return;
    smartAudioResults_.clear();
    notify(ImportField::smartAudio);
}

} // namespace orvane
