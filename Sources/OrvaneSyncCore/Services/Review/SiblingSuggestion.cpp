#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"

#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

/// A number from a stored file may exceed the range of integers.
long long whole(double value) {
    constexpr double most = 1e15;
    return std::isnan(value) ? 0 : static_cast<long long>(std::clamp(value, -most, most));
}

std::string cameraText(const SyncGroup& group) {
    const auto letter = GroupNaming::cameraLetter(group.video);
    return letter ? "Cam " + *letter : group.video.filename;
}

/// Whether the clip's sound, moved by hand by that much, lies under a part of the picture; also if the length
/// of a file is not known.
bool hasSoundAt(const SyncGroup& group, double offsetSeconds) {
    if (group.isMOS()) return true;
    const AudioMatch& match = group.audioMatches.front();
    const double start = match.syncOffsetSeconds + offsetSeconds;
    const auto &sound = match.audio->durationSeconds, &picture = group.video.durationSeconds;
    return !sound || !picture || (start < *picture && start + *sound > 0);
}

} // namespace

std::optional<SiblingSuggestion> activeSiblingSuggestion(const SyncGroup& group, const SyncGroupList& groups,
                                                         GroupNaming::Source source,
                                                         const std::optional<std::string>& customPattern,
                                                         double frameRate,
                                                         const std::set<std::string>& dismissedKeys) {
    if (!(frameRate > 0)) return std::nullopt;
    const auto isFrame = [rate = exactRateValue(frameRate)](double seconds) {
        return std::abs(truncatedFrames(seconds * rate).value_or(1)) >= 1;
    };
    const SyncGroupList siblings = SyncClustering::siblings(group, groups, source, customPattern);
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        const double offset = siblings[i].manualAudioOffsetSeconds;
        if (siblings[i].id == group.id || !isFrame(offset) ||
            !isFrame(offset - group.manualAudioOffsetSeconds))
            continue;
        // Such an offset corrects the clock of the sibling's card, which this clip's card does not share.
        if (!hasSoundAt(group, offset) && hasSoundAt(group, group.manualAudioOffsetSeconds)) continue;
        constexpr double milliseconds = 1000;
        std::string key = siblings[i].id.text() + ":" + std::to_string(whole(offset * milliseconds));
        if (dismissedKeys.contains(key)) continue;
        SiblingSuggestion suggestion{siblings.element(i), offset, std::move(key)};
        if (cameraText(siblings[i]) == cameraText(group))
            suggestion.folder = ClipNames::cameraFolders({&siblings[i], &group}).front();
        return suggestion;
    }
    return std::nullopt;
}

std::string SiblingSuggestion::text(double frameRate) const {
    return cameraText(*sibling) + (folder.empty() ? "" : " " + folder) + " was shifted " +
           formatOffset(offsetSeconds, frameRate) + " — apply the same to this cam?";
}

std::string formatOffset(double seconds, double frameRate) {
    constexpr double leastSeconds = 0.001;
    const long long frames =
        std::abs(seconds) < leastSeconds ? 0 : whole(std::round(seconds * exactRateValue(frameRate)));
    return (frames < 0 ? "" : "+") + std::to_string(frames) + "f";
}

} // namespace orvane
