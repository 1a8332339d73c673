#include "OrvaneSyncCore/Services/Export/ChannelRoles.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Export/VolumeCurves.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double smallestGlobalOffsetSeconds = 0.0001;

/// One file of a clip, on its own time axis.
struct Placement {
    const MediaAsset& audio;
    const std::string& assetID;
    const TakeFile& file;
    Time start;
    Time place; ///< on the clip's axis, before offsets are added
    Time duration;

    Placement(const SyncGroup& group, const TakeFile& takeFile, const std::string& id, double fps,
              const ExportSettings& settings)
        : audio(group.audioMatches[takeFile.matchIndex].audio), assetID(id), file(takeFile),
          start(audioStartTime(audio).value_or(Time::zero())),
          place(audioPlaceTime(group, group.audioMatches[takeFile.matchIndex], fps, settings)),
          duration(soundLength(soundDuration(audio.durationSeconds, audioRate(audio)), fps)) {}
};

/// The controls of the effects go from 0 to 100 in whole steps. `amount` is 0 to 1; absent gives 0.
double wholePercent(std::optional<float> amount) {
    const double percent = std::round(static_cast<double>(amount.value_or(0.0F)) * 100);
    return std::isnan(percent) ? 0 : std::clamp(percent, 0.0, 100.0);
}

AdjustAudioEnhanced enhancement(const TrackAdjustment& track) {
    AdjustAudioEnhanced adjust;
    if (track.voiceIsolationAmount)
        adjust.voiceIsolation = AdjustVoiceIsolation{wholePercent(track.voiceIsolationAmount)};
    if (track.loudnessAmount)
        adjust.loudness =
            AdjustLoudness{wholePercent(track.loudnessAmount), wholePercent(track.loudnessUniformity)};
    return adjust;
}

/// The keys are running numbers of channels.
std::unordered_map<int, AdjustAudioEnhanced> enhancements(const SmartAudioResult* result) {
    std::unordered_map<int, AdjustAudioEnhanced> byNumber;
    if (result == nullptr) return byNumber;
    for (const TrackAdjustment& track : result->tracks)
        if (track.hasAdjustment()) byNumber[track.trackIndex] = enhancement(track);
    return byNumber;
}

bool isActive(int number, const SyncGroup& group, const SmartAudioResult* result) {
    if (!group.manualActiveTracks.empty()) return group.manualActiveTracks.contains(number);
    return result == nullptr || !result->bestTrackIndex || *result->bestTrackIndex == number;
}

/// The first channel of a file; the other channels are anchored to it on the lanes below. `lane` is the lane
/// of the first channel.
Audio channelsOf(const Placement& placed, std::optional<int> lane, const ChannelRoles& roles,
                 const VolumeCurves& curves) {
    const TakeFile& file = placed.file;
    const auto channel = [&](int track, std::optional<int> itsLane) {
        const int number = file.firstChannel + track - 1;
        Audio element;
        element.ref = {placed.assetID};
        element.lane = itsLane;
        element.offset = placed.start;
        element.start = placed.start;
        element.duration = placed.duration;
        element.role = AudioRole{{roles.of(number)}};
        element.srcCh = {track};
        // Smart Audio decides for the take only; it did not analyse the other recordings of the clip.
        if (isHeard(file.role))
            element.adjust.volume = curves.of(number, {file.startSeconds, placed.start, placed.duration});
        return element;
    };
    Audio first = channel(1, lane);
    first.anchored.reserve(static_cast<std::size_t>(file.channelCount - 1));
    for (int track = 2; track <= file.channelCount; ++track)
        first.anchored.emplace_back(channel(track, lane.value_or(0) - track + 1));
    return first;
}

/// The take's first file gets a clip element of its own.
Clip firstFile(const Placement& placed, Audio channels, const std::string& formatID, TcFormat tcFormat) {
    Clip clip;
    clip.lane = -1;
    clip.name = placed.audio.filename;
    clip.start = placed.start;
    clip.duration = placed.duration;
    clip.format = IDREF{formatID};
    clip.tcFormat = tcFormat;
    clip.items.emplace_back(std::move(channels));
    return clip;
}

} // namespace

AudioChain buildAudioChain(const SyncGroup& group, const std::vector<std::string>& audioAssetIDs,
                           const std::string& audioFormatID, double fps, const ExportSettings& settings) {
    AudioChain chain;
    if (audioAssetIDs.size() < group.audioMatches.size()) return chain;
    const auto found = settings.smartAudioResults.find(group.id);
    const SmartAudioResult* result = found == settings.smartAudioResults.end() ? nullptr : &*found->second;

    const Take take = takeOf(group, settings.defaultAudioTracks);
    const ChannelRoles roles(group, take, settings);
    const VolumeCurves curves = settings.get(settings::volumeKeyframes) && result != nullptr
                                    ? VolumeCurves(group, *result)
                                    : VolumeCurves();
    // Every file keeps its own times and moves by its offset on the picture's axis: the sound slides against
    // the picture, and its first sample is still its first.
    const Time shift = soundShift(group, settings, fps);
    chain.anchored.reserve(take.files.size());
    int lane = 0;
    for (const TakeFile& file : take.files) {
        if (file.role == TakeRole::mirror) continue;
        const Placement placed(group, file, audioAssetIDs[file.matchIndex], fps, settings);
        const bool isFirst = chain.anchored.empty();
        Audio channels = channelsOf(placed, isFirst ? std::nullopt : std::optional(lane), roles, curves);
        if (isFirst) {
            chain.anchored.emplace_back(
                firstFile(placed, std::move(channels), audioFormatID, tcFormat(group.video, fps)));
        } else {
            chain.anchored.emplace_back(std::move(channels));
        }
        std::visit([&](auto& item) { item.offset = placed.place + shift; }, chain.anchored.back());
        lane -= file.channelCount;
    }

    const auto byNumber = enhancements(result);
    chain.roleSources.reserve(static_cast<std::size_t>(roles.count()));
    for (int number = 1; number <= roles.count(); ++number) {
        AudioRoleSource source;
        source.role = {{roles.of(number)}};
        source.active = isActive(number, group, result);
        const auto adjust = byNumber.find(number);
        if (adjust != byNumber.end()) source.adjust = adjust->second;
        chain.roleSources.push_back(std::move(source));
    }
    return chain;
}

Time soundShift(const SyncGroup& group, const ExportSettings& settings, double fps) {
    return manualOffsetTime(group.manualAudioOffsetSeconds, fps) +
           manualOffsetTime(effectiveGlobalAudioOffset(group, settings, fps), fps);
}

double effectiveGlobalAudioOffset(const SyncGroup& group, const ExportSettings& settings, double fps) {
    const double offset = settings.globalAudioOffsetSeconds;
    if (!(std::abs(offset) > smallestGlobalOffsetSeconds)) return 0;
    const auto& fromName = settings.globalAudioOffsetStartingFromFilename;
    if (fromName && !fromName->empty() &&
        platform::text::compareLocalizedStandard(group.video.filename, *fromName) < 0)
        return 0;
    const auto& fromTC = settings.globalAudioOffsetStartingFromTC;
    if (fromTC && !fromTC->empty()) {
        const auto first = timecodeToTime(fromTC, fps, group.video.timecodeFrameRate);
        const auto own = pictureStartTime(group.video, fps);
        if (first && own && *own < *first) return 0;
    }
    return offset;
}

} // namespace orvane::FCPXMLExporter
