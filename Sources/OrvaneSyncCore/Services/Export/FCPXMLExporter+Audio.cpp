#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double smallestGlobalOffsetSeconds = 0.0001;
// What a wave file's header can state; a larger count is a fault of the file.
constexpr int mostChannels = 65535;

/// One file of a clip on its own time axis.
struct Placement {
    const MediaAsset& audio;
    const std::string& assetID;
    Time start;
    Time place; ///< on the clip's axis, without the offsets
    Time duration;
    int channels;

    Placement(const SyncGroup& group, std::size_t index, const std::string& id, double fps,
              const ExportSettings& settings)
        : audio(group.audioMatches[index].audio), assetID(id),
          start(audioStartTime(audio).value_or(Time::zero())),
          place(audioPlaceTime(group, group.audioMatches[index], fps)),
          duration(soundLength(soundDuration(audio.durationSeconds, audioRate(audio)), fps)),
          channels(channelCountOf(audio, settings)) {}

    Audio channel(int track, std::optional<int> lane, const std::string& role) const {
        Audio element;
        element.ref = {assetID};
        element.lane = lane;
        element.offset = start;
        element.start = start;
        element.duration = duration;
        element.role = AudioRole{{role}};
        element.srcCh = {track};
        return element;
    }
};

/// Names the channels of all files of a clip, one after the other.
class RoleEntries {
  public:
    explicit RoleEntries(const ExportSettings& settings) : settings_(settings) {}

    const std::string& add(int track, const MediaAsset& audio) {
        roles_.push_back(audioRoleName(track, audio, settings_));
        return roles_.back();
    }
    /// The place in the list, from 1, is the running number of the channel.
    const std::vector<std::string>& roles() const { return roles_; }

  private:
    const ExportSettings& settings_;
    std::vector<std::string> roles_;
};

double twoDecimals(double value) { return std::round(value * 100) / 100; }

AdjustAudioEnhanced enhancement(const TrackAdjustment& track) {
    AdjustAudioEnhanced adjust;
    if (track.voiceIsolationAmount)
        adjust.voiceIsolation = AdjustVoiceIsolation{twoDecimals(*track.voiceIsolationAmount)};
    if (track.loudnessAmount)
        adjust.loudness = AdjustLoudness{twoDecimals(*track.loudnessAmount),
                                         twoDecimals(track.loudnessUniformity.value_or(0.0F))};
    return adjust;
}

using EnhancementByRole = std::unordered_map<std::string, AdjustAudioEnhanced>;

EnhancementByRole enhancements(const SmartAudioResult* result, const MediaAsset& firstFile,
                               const ExportSettings& settings) {
    EnhancementByRole byRole;
    if (result == nullptr) return byRole;
    for (const TrackAdjustment& track : result->tracks)
        if (track.hasAdjustment())
            byRole[audioRoleName(track.trackIndex, firstFile, settings)] = enhancement(track);
    return byRole;
}

bool isActive(int number, const SyncGroup& group, const SmartAudioResult* result) {
    if (!group.manualActiveTracks.empty()) return group.manualActiveTracks.contains(number);
    return result == nullptr || !result->bestTrackIndex || *result->bestTrackIndex == number;
}

/// The file that the clip was matched to first: a clip of its own, which carries the offsets. The channel's
/// own times stay, so that an offset slides the sound against the picture and its first sample is still its
/// first.
Clip firstFile(const Placement& file, const Time& offset, const std::string& formatID, TcFormat tcFormat,
               RoleEntries& roles) {
    Audio first = file.channel(1, std::nullopt, roles.add(1, file.audio));
    first.anchored.reserve(static_cast<std::size_t>(file.channels - 1));
    for (int track = 2; track <= file.channels; ++track)
        first.anchored.emplace_back(file.channel(track, 1 - track, roles.add(track, file.audio)));

    Clip clip;
    clip.lane = -1;
    clip.offset = offset;
    clip.name = file.audio.filename;
    clip.start = file.start;
    clip.duration = file.duration;
    clip.format = IDREF{formatID};
    clip.tcFormat = tcFormat;
    clip.items.emplace_back(std::move(first));
    return clip;
}

/// A further file: its first channel hangs under the picture and carries the others. `lane` is that of the
/// first channel, and afterwards that of the next file.
Audio furtherFile(const Placement& file, int& lane, RoleEntries& roles) {
    Audio first = file.channel(1, lane--, roles.add(1, file.audio));
    first.offset = file.place;
    for (int track = 2; track <= file.channels; ++track)
        first.anchored.emplace_back(file.channel(track, lane--, roles.add(track, file.audio)));
    return first;
}

} // namespace

AudioChain buildAudioChain(const SyncGroup& group, const std::vector<std::string>& audioAssetIDs,
                           const std::string& audioFormatID, double fps, const ExportSettings& settings) {
    AudioChain chain;
    const std::size_t files = std::min(group.audioMatches.size(), audioAssetIDs.size());
    if (files == 0) return chain;
    const auto found = settings.smartAudioResults.find(group.id);
    const SmartAudioResult* result = found == settings.smartAudioResults.end() ? nullptr : &found->second;

    RoleEntries roles(settings);
    const Placement first(group, 0, audioAssetIDs[0], fps, settings);
    const Time offset = first.place + manualOffsetTime(group.manualAudioOffsetSeconds, fps) +
                        manualOffsetTime(effectiveGlobalAudioOffset(group, settings, fps), fps);
    chain.anchored.reserve(files);
    chain.anchored.emplace_back(firstFile(first, offset, audioFormatID, tcFormat(group.video, fps), roles));
    int lane = -first.channels;
    for (std::size_t i = 1; i < files; ++i) {
        const Placement file(group, i, audioAssetIDs[i], fps, settings);
        chain.anchored.emplace_back(furtherFile(file, lane, roles));
    }

    const EnhancementByRole byRole = enhancements(result, first.audio, settings);
    chain.roleSources.reserve(roles.roles().size());
    for (const std::string& role : roles.roles()) {
        AudioRoleSource source;
        source.role = {{role}};
        source.active = isActive(static_cast<int>(chain.roleSources.size()) + 1, group, result);
        const auto adjust = byRole.find(role);
        if (adjust != byRole.end()) source.adjust = adjust->second;
        chain.roleSources.push_back(std::move(source));
    }
    return chain;
}

int channelCountOf(const MediaAsset& audio, const ExportSettings& settings) {
    return std::clamp(audio.channelCount.value_or(settings.defaultAudioTracks), 1, mostChannels);
}

std::string audioRoleName(int track, const MediaAsset& audio, const ExportSettings& settings) {
    std::string role = settings.audioBaseRole;
    role += '.';
    if (audio.ixmlData && settings.useIXMLTrackNames)
        for (const IXMLTrack& named : audio.ixmlData->tracks)
            if (named.channelIndex == track && !named.name.empty()) return role += named.name;
    const auto subrole = settings.subroleMap.find(track);
    return role += subrole == settings.subroleMap.end() ? defaultSubrole(track) : subrole->second;
}

std::string defaultSubrole(int track) {
    if (track == 1) return "Mix";
    return track == 2 ? "Boom" : "Lav " + std::to_string(std::int64_t{track} - 2);
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
