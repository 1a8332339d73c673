#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"

#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// Seconds of the clip that have sound, at the sound's present position.
double coveredSeconds(const SyncGroup& group, const Take& take) {
    const double moved = group.manualAudioOffsetSeconds;
    if (take.heardFileCount() == 1 && moved == 0) return group.audioMatches.front().overlapDurationSeconds;
    const double start = take.offsetSeconds + moved;
    const double end = std::min(start + take.durationSeconds, *group.video.durationSeconds);
    return std::max(end - std::max(start, 0.0), 0.0);
}

} // namespace

std::string startText(const MediaAsset& asset) { return asset.startTimecodeString.value_or("-"); }

std::string lengthText(const MediaAsset& asset) {
    return asset.durationSeconds ? clockText(*asset.durationSeconds) : "-";
}

std::string channelsText(const MediaAsset& audio) {
    return audio.channelCount ? " (" + std::to_string(*audio.channelCount) + " ch)" : "";
}

std::string soundText(const SyncGroup& group, const Take& take, const FileNames& names) {
    if (take.isEmpty()) return "-";
    std::string text = filesText(group, take, names);
    const bool areChannelsKnown = std::ranges::all_of(take.files, [&](const TakeFile& file) {
        return !isHeard(file.role) || group.audioMatches[file.matchIndex].audio->channelCount;
    });
    if (areChannelsKnown) text += " (" + std::to_string(take.channelCount) + " ch)";
    const auto count = [&](TakeRole role) { return std::ranges::count(take.files, role, &TakeFile::role); };
    if (const auto others = count(TakeRole::alternate)) text += " + " + std::to_string(others) + " more";
    if (const auto copies = count(TakeRole::mirror)) text += " + " + counted(copies, "copy", "copies");
    return text;
}

std::string beginsText(const SyncGroup& group, const Take& take) {
    if (take.isEmpty()) return "-";
    const double offset = take.offsetSeconds + group.manualAudioOffsetSeconds;
    constexpr double atOnce = 0.0005;
    if (std::abs(offset) < atOnce) return "with picture";
    return secondsText(std::abs(offset)) + (offset > 0 ? " after" : " before");
}

std::string matchText(const SyncGroup& group, const Take& take) {
    std::string text = group.matchStatus.label();
    if (group.video.isOffspeed()) text += ", off-speed";
    const auto& length = group.video.durationSeconds;
    if (group.audioMatches.empty() || !length) return text;
    // Any overlap is a match, but picture without sound has to be checked.
    const double covered = coveredSeconds(group, take);
    constexpr double leastReportedSeconds = 0.5; // seconds
    // Sound that was attached without timecode begins at the clip's beginning, and its overlap is not known.
    if (covered == 0 && group.audioMatches.front().syncOffsetSeconds == 0 &&
        group.manualAudioOffsetSeconds == 0)
        return text;
    if (!group.video.isOffspeed() && *length - covered > leastReportedSeconds)
        text += ", covers " + formatted("%.1f", covered) + " of " + formatted("%.1f s", *length);
    return text;
}

std::string recordingCountText(const SyncGroup& group) {
    const std::size_t count = group.audioMatches.size() > 1 ? recordingsOf(group).size() : 0;
    return count > 1 ? std::to_string(count) + " recordings" : "";
}

std::string movedSinceLockText(const SyncGroup& group, double frameRate) {
    return "moved since locked: " + formatOffset(group.lockedAtManualOffset.value_or(0), frameRate) + " to " +
           formatOffset(group.manualAudioOffsetSeconds, frameRate);
}

std::string movedText(const SyncGroup& group, double frameRate) {
    return "moved to " + formatOffset(group.manualAudioOffsetSeconds, frameRate);
}

} // namespace orvane
