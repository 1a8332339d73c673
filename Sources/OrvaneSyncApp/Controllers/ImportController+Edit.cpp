#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace orvane {

namespace {

void lock(SyncGroup& group) {
    group.isLocked = true;
    group.lockedAtAudioAnchor = group.audioAnchorOffsetInAudioSeconds;
    group.lockedAtPictureAnchor = group.pictureClapAnchorSeconds;
    group.lockedAtManualOffset = group.manualAudioOffsetSeconds;
}

void unlock(SyncGroup& group) {
    group.isLocked = false;
    group.lockedAtAudioAnchor.reset();
    group.lockedAtPictureAnchor.reset();
    group.lockedAtManualOffset.reset();
}

/// A take of a scene, where the recorder wrote both and the take is a whole number.
struct Slate {
    std::string_view scene;
    std::int64_t take = 0;
};

std::optional<Slate> slateOf(const SyncGroup& group) {
    const MediaAsset* audio = group.primaryAudio();
    if (audio == nullptr || !audio->ixmlData || !audio->ixmlData->scene || !audio->ixmlData->take)
        return std::nullopt;
    const auto take = platform::text::decimalInteger(*audio->ixmlData->take);
    return take ? std::optional(Slate{*audio->ixmlData->scene, *take}) : std::nullopt;
}

/// What both resets clear.
void clearDecisions(SyncGroup& group) {
    group.manualActiveTracks.clear();
    group.tracksManuallyEdited.reset();
    group.manualAudioOffsetSeconds = 0;
    group.audioAnchorOffsetInAudioSeconds.reset();
    group.pictureClapAnchorSeconds.reset();
    unlock(group);
    group.isApproved = false;
}

} // namespace

bool ImportController::edit(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    assertOnMainThread();
    if (!syncGroups_.update(groupID, change)) return false;
    notify(ImportField::syncGroups);
    return true;
}

const SyncGroup* ImportController::unlockedGroup(UUID groupID) const {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    return group != nullptr && !group->isLocked ? group : nullptr;
}

void ImportController::adjustAudioOffset(UUID groupID, double deltaSeconds) {
    const SyncGroup* group = syncGroups_.find(groupID);
    if (group == nullptr || !std::isfinite(group->manualAudioOffsetSeconds + deltaSeconds)) return;
    edit(groupID, [&](SyncGroup& own) { own.manualAudioOffsetSeconds += deltaSeconds; });
}

void ImportController::setAudioAnchor(UUID groupID, std::optional<double> secondsInAudio) {
    if (secondsInAudio && !std::isfinite(*secondsInAudio)) return;
    edit(groupID, [&](SyncGroup& group) { group.audioAnchorOffsetInAudioSeconds = secondsInAudio; });
}

void ImportController::resetAudioOffset(UUID groupID) {
    edit(groupID, [](SyncGroup& group) { group.manualAudioOffsetSeconds = 0; });
}

void ImportController::toggleLocked(UUID groupID) {
    edit(groupID, [](SyncGroup& group) { group.isLocked ? unlock(group) : lock(group); });
}

void ImportController::lockAllInCluster(UUID groupID, GroupNaming::Source source,
                                        const std::optional<std::string>& customPattern) {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    if (group == nullptr) return;
    const auto nameOf = [&](const SyncGroup& one) {
        return GroupNaming::baseName(one, source, customPattern, GroupNaming::defaultSeparator);
    };
    const std::string name = nameOf(*group);
    if (syncGroups_.updateWhere([&](const SyncGroup& one) { return !one.isLocked && nameOf(one) == name; },
                                lock) > 0)
        notify(ImportField::syncGroups);
}

void ImportController::toggleApproved(UUID groupID) {
    edit(groupID, [](SyncGroup& group) { group.isApproved = !group.isApproved; });
}

void ImportController::toggleMOS(UUID groupID) {
    const SyncGroup* group = syncGroups_.find(groupID);
    if (group == nullptr || !group->audioMatches.empty()) return;
    edit(groupID, [](SyncGroup& own) {
        own.matchStatus =
            own.matchStatus == MatchStatus::mos() ? MatchStatus::unmatched() : MatchStatus::mos();
    });
}

void ImportController::togglePickup(UUID groupID) {
    edit(groupID, [](SyncGroup& group) { group.isPickup = !group.isPickup; });
}

void ImportController::markScenePickupFromHere(UUID groupID) {
    assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    const auto from = group == nullptr ? std::nullopt : slateOf(*group);
    if (!from) return;
    const std::string scene(from->scene); // the group may be replaced on the way
    const auto isPickup = [&](const SyncGroup& one) {
        const auto slate = slateOf(one);
        return slate && slate->scene == scene && slate->take >= from->take;
    };
    if (syncGroups_.updateWhere(isPickup, [](SyncGroup& one) { one.isPickup = true; }) > 0)
        notify(ImportField::syncGroups);
}

void ImportController::toggleExcludedFromExport(UUID groupID) {
    edit(groupID, [](SyncGroup& group) { group.isExcludedFromExport = !group.isExcludedFromExport; });
}

void ImportController::toggleExcludedFromMulticam(UUID groupID) {
    edit(groupID,
         [](SyncGroup& group) { group.isExcludedFromMulticamFlag = !group.isExcludedFromMulticam(); });
}

void ImportController::setManualClipName(UUID groupID, std::string_view name) {
    const std::string_view trimmed = platform::text::trimmed(name);
    edit(groupID, [&](SyncGroup& group) {
        group.manualClipName = trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
    });
}

void ImportController::setSyncMethod(UUID groupID, SyncMethod method) {
    edit(groupID, [&](SyncGroup& group) { group.syncMethod = method; });
}

void ImportController::setGenerateNativeMOS(UUID groupID, bool enabled) {
    edit(groupID, [&](SyncGroup& group) { group.generateNativeMOSClip = enabled; });
}

void ImportController::setGenerateProjectRateClip(UUID groupID, bool enabled) {
    edit(groupID, [&](SyncGroup& group) { group.generateProjectRateClipFlag = enabled; });
}

void ImportController::resetClipToAutoSync(UUID groupID) {
    const bool found = edit(groupID, [](SyncGroup& group) {
        clearDecisions(group);
        group.manualBlockOverrides.clear();
        group.algorithmExcludedTracks.clear();
    });
    if (found) removeSmartAudioCaches(groupID);
}

platform::Task ImportController::resetAllClipsToAutoSync() {
    assertOnMainThread();
    if (syncGroups_.updateWhere([](const SyncGroup&) { return true; }, clearDecisions) > 0)
        notify(ImportField::syncGroups);
    return reanalyseAll();
}

void ImportController::applyBatchRename(const BatchRenamer& renamer) {
    assertOnMainThread();
    const auto names = renamer.newNames(syncGroups_, {settings_->get(settings::clipNamingSource),
                                                      settings_->get(settings::customNamingPattern),
                                                      settings_->get(settings::namingSeparator)});
    if (names.empty()) return;
    withUndo(undoSteps::setManualClipName, [&] {
        for (const auto& [id, name] : names) setManualClipName(id, name);
    });
}

void ImportController::clearAllManualNames() {
    assertOnMainThread();
    const auto named = BatchRenamer::manuallyNamed(syncGroups_);
    if (named.empty()) return;
    withUndo(undoSteps::setManualClipName, [&] {
        for (const UUID& id : named) setManualClipName(id, "");
    });
}

void ImportController::editWildTrack(UUID id, const std::function<void(WildTrack&)>& change) {
    assertOnMainThread();
    const auto track = std::ranges::find(wildTracks_, id, &WildTrack::id);
    if (track == wildTracks_.end()) return;
    change(*track);
    notify(ImportField::wildTracks);
}

void ImportController::renameWildTrack(UUID id, std::string_view name) {
    editWildTrack(id, [&](WildTrack& track) {
        track.customName = name.empty() ? track.audio.filenameStem() : std::string(name);
    });
}

void ImportController::toggleWildTrackApproved(UUID id) {
    editWildTrack(id, [](WildTrack& track) { track.isApproved = !track.isApproved; });
}

} // namespace orvane
