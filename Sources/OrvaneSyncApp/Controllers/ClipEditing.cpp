#include "OrvaneSyncApp/Controllers/ClipEditing.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <unordered_set>
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

/// Scene and take as the recorder wrote them; the take must be a whole number.
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

/// The decisions that both resets clear.
void clearDecisions(SyncGroup& group) {
    group.manualActiveTracks.clear();
    group.tracksManuallyEdited.reset();
    group.manualAudioOffsetSeconds = 0;
    group.audioAnchorOffsetInAudioSeconds.reset();
    group.pictureClapAnchorSeconds.reset();
    unlock(group);
    group.isApproved = false;
}
/// Whether clearing makes a difference; this check costs less than copying the clip.
bool hasDecisions(const SyncGroup& group) {
    return !group.manualActiveTracks.empty() || group.tracksManuallyEdited ||
           group.manualAudioOffsetSeconds != 0 || group.audioAnchorOffsetInAudioSeconds ||
           group.pictureClapAnchorSeconds || group.isLocked || group.lockedAtAudioAnchor ||
           group.lockedAtPictureAnchor || group.lockedAtManualOffset || group.isApproved;
}

} // namespace

void ClipEditing::adjustAudioOffset(UUID groupID, double deltaSeconds) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || !std::isfinite(group->manualAudioOffsetSeconds + deltaSeconds)) return;
    if (std::abs(group->manualAudioOffsetSeconds + deltaSeconds) > furthestOffsetSeconds)
        throw OutOfRange("the sound can be moved by a day (86400 s) at most");
    work_.edit(groupID, [&](SyncGroup& own) { own.manualAudioOffsetSeconds += deltaSeconds; });
    smartAudio_.reapplyRanges(groupID);
}

void ClipEditing::setAudioAnchor(UUID groupID, std::optional<double> secondsInAudio) {
    if (secondsInAudio && !std::isfinite(*secondsInAudio)) return;
    work_.edit(groupID, [&](SyncGroup& group) { group.audioAnchorOffsetInAudioSeconds = secondsInAudio; });
}

void ClipEditing::resetAudioOffset(UUID groupID) {
    work_.edit(groupID, [](SyncGroup& group) { group.manualAudioOffsetSeconds = 0; });
    smartAudio_.reapplyRanges(groupID);
}

void ClipEditing::toggleLocked(UUID groupID) {
    work_.edit(groupID, [](SyncGroup& group) { group.isLocked ? unlock(group) : lock(group); });
}

void ClipEditing::lockAllInCluster(UUID groupID, GroupNaming::Source source,
                                   const std::optional<std::string>& customPattern) {
    work_.notices.assertOnMainThread();
    const SyncGroupList clips = work_.syncGroups();
    const SyncClustering::Index takes(clips, source, customPattern);
    std::unordered_set<UUID> cluster;
    std::optional<std::size_t> own;
    for (std::size_t i = 0; i < clips.size() && !own; ++i)
        if (clips[i].id == groupID) own = i;
    if (!own) return;
    for (std::size_t i = 0; i < clips.size(); ++i)
        if (takes.key(i) == takes.key(*own) && takes.shoot(i) == takes.shoot(*own))
            cluster.insert(clips[i].id);
    work_.editWhere([&](const SyncGroup& one) { return !one.isLocked && cluster.contains(one.id); }, lock);
}

void ClipEditing::toggleApproved(UUID groupID) {
    work_.edit(groupID, [](SyncGroup& group) { group.isApproved = !group.isApproved; });
}

void ClipEditing::toggleMOS(UUID groupID) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || !group->audioMatches.empty()) return;
    work_.edit(groupID, [](SyncGroup& own) {
        own.matchStatus =
            own.matchStatus == MatchStatus::mos() ? MatchStatus::unmatched() : MatchStatus::mos();
    });
}

void ClipEditing::togglePickup(UUID groupID) {
    work_.edit(groupID, [](SyncGroup& group) { group.isPickup = !group.isPickup; });
}

void ClipEditing::markScenePickupFromHere(UUID groupID) {
    work_.notices.assertOnMainThread();
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const auto from = group == nullptr ? std::nullopt : slateOf(*group);
    if (!from) return;
    const std::string scene(from->scene); // the change may replace the group
    const auto isPickup = [&](const SyncGroup& one) {
        const auto slate = slateOf(one);
        return slate && slate->scene == scene && slate->take >= from->take;
    };
    work_.editWhere(isPickup, [](SyncGroup& one) { one.isPickup = true; });
}

void ClipEditing::toggleExcludedFromExport(UUID groupID) {
    work_.edit(groupID, [](SyncGroup& group) { group.isExcludedFromExport = !group.isExcludedFromExport; });
}

void ClipEditing::toggleExcludedFromMulticam(UUID groupID) {
    work_.edit(groupID,
               [](SyncGroup& group) { group.isExcludedFromMulticamFlag = !group.isExcludedFromMulticam(); });
}

void ClipEditing::setManualClipName(UUID groupID, std::string_view name) {
    const std::string_view trimmed = platform::text::trimmed(name);
    work_.edit(groupID, [&](SyncGroup& group) {
        group.manualClipName = trimmed.empty() ? std::nullopt : std::optional<std::string>(trimmed);
    });
}

void ClipEditing::setSyncMethod(UUID groupID, SyncMethod method) {
    work_.edit(groupID, [&](SyncGroup& group) { group.syncMethod = method; });
}

void ClipEditing::setGenerateNativeMOS(UUID groupID, bool enabled) {
    work_.edit(groupID, [&](SyncGroup& group) { group.generateNativeMOSClip = enabled; });
}

void ClipEditing::setGenerateProjectRateClip(UUID groupID, bool enabled) {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || group->shouldGenerateProjectRateClip() == enabled) return; // absent is false
    work_.edit(groupID, [&](SyncGroup& own) { own.generateProjectRateClipFlag = enabled; });
}

void ClipEditing::resetClipToAutoSync(UUID groupID) {
    const bool found = work_.edit(groupID, [](SyncGroup& group) {
        clearDecisions(group);
        group.manualBlockOverrides.clear();
        group.algorithmExcludedTracks.clear();
    });
    if (found) smartAudio_.caches().removeSmartAudioCaches(groupID);
}

platform::Task ClipEditing::resetAllClipsToAutoSync() {
    work_.notices.assertOnMainThread();
    work_.editWhere(hasDecisions, clearDecisions);
    return smartAudio_.reanalyseAll();
}

void ClipEditing::applyBatchRename(const BatchRenamer& renamer,
                                   const std::optional<std::vector<UUID>>& only) {
    work_.notices.assertOnMainThread();
    const platform::SettingsStore& store = *work_.environment.settings;
    SyncGroupList clips = work_.syncGroups();
    if (only) {
        const std::unordered_set<UUID> chosen(only->begin(), only->end());
        clips = clips.filtered([&](const SyncGroup& clip) { return chosen.contains(clip.id); });
    }
    const auto names = renamer.newNames(clips, {store.get(settings::clipNamingSource),
                                                store.get(settings::customNamingPattern),
                                                store.get(settings::namingSeparator)});
    if (names.empty()) return;
    work_.withUndo(undoSteps::setManualClipName, [&] {
        for (const auto& [id, name] : names) setManualClipName(id, name);
    });
}

void ClipEditing::clearAllManualNames() {
    work_.notices.assertOnMainThread();
    const auto named = BatchRenamer::manuallyNamed(work_.syncGroups());
    if (named.empty()) return;
    work_.withUndo(undoSteps::setManualClipName, [&] {
        for (const UUID& id : named) setManualClipName(id, "");
    });
}

} // namespace orvane
