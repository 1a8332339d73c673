#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Models/Shared.h"

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orvane {

/// The result of matching one video.
struct MatchStatus {
    enum class Kind { matched, ambiguous, splitRecording, unmatched, mos, manual };
    Kind kind = Kind::unmatched;
    int count = 0; ///< payload of `ambiguous` and `splitRecording`

    static MatchStatus matched() { return {Kind::matched, 0}; }
    static MatchStatus ambiguous(int count) { return {Kind::ambiguous, count}; }
    static MatchStatus splitRecording(int count) { return {Kind::splitRecording, count}; }
    static MatchStatus unmatched() { return {Kind::unmatched, 0}; }
    static MatchStatus mos() { return {Kind::mos, 0}; }
    static MatchStatus manual() { return {Kind::manual, 0}; }

    std::string label() const;
    /// The case's name as it is stored.
    std::string_view name() const;
    /// True for `ambiguous` and `splitRecording`.
    bool hasCount() const;
    /// `matched`, `splitRecording`, `mos` or `manual`. Clips with these statuses are exported and count when
    /// the rate is chosen.
    bool isSettled() const { return kind != Kind::ambiguous && kind != Kind::unmatched; }

    bool operator==(const MatchStatus&) const = default;
};

/// How a clip is aligned. Not used in the arithmetic of offsets.
enum class SyncMethod { timecode, clap, manual };
inline constexpr std::array<SyncMethod, 3> allSyncMethods{SyncMethod::timecode, SyncMethod::clap,
                                                          SyncMethod::manual};
std::string_view label(SyncMethod method);
std::string_view description(SyncMethod method);

/// One audio file matched to a clip.
struct AudioMatch {
    AudioMatch(Shared<MediaAsset> audio, double syncOffsetSeconds, double overlapDurationSeconds);
    AudioMatch(UUID id, Shared<MediaAsset> audio, double syncOffsetSeconds, double overlapDurationSeconds);

    UUID id;
    Shared<MediaAsset> audio;          ///< shared, as one recording is under many clips
    double syncOffsetSeconds = 0;      ///< audio start minus video start on the timecode axis
    double overlapDurationSeconds = 0; ///< length of the common time range
};

/// The editor's track choice for a stretch of a clip, in seconds of clip time.
struct BlockOverride {
    UUID id;
    double startSeconds = 0;
    double endSeconds = 0;
    int trackIndex = 0; ///< from 1

    bool operator==(const BlockOverride&) const = default;
};

/// One video with its matched audio and everything the editor decided. Identity, and equality, is by `id`
/// alone.
///
/// Axes: a moment `a` seconds into the primary audio is at video time
/// a + audioMatches[0].syncOffsetSeconds + manualAudioOffsetSeconds; the exporter adds its global offset
/// last.
struct SyncGroup {
    SyncGroup(MediaAsset video, std::vector<AudioMatch> audioMatches, MatchStatus matchStatus,
              std::optional<std::string> clipName = std::nullopt);
    SyncGroup(UUID id, MediaAsset video, std::vector<AudioMatch> audioMatches, MatchStatus matchStatus,
              std::optional<std::string> clipName = std::nullopt);

    UUID id;
    MediaAsset video;
    std::vector<AudioMatch> audioMatches; ///< best first, in the order of rankMeetings
    MatchStatus matchStatus;
    std::string clipName; ///< stored display name
    std::optional<std::map<std::string, std::string>> aleMetadata;
    std::optional<std::map<std::string, std::string>> lockitMetadata;
    std::set<int> algorithmExcludedTracks; ///< tracks from 1 that Smart Audio must not use
    std::set<int> manualActiveTracks;      ///< tracks from 1 that are switched on
    std::optional<bool> tracksManuallyEdited;
    std::vector<BlockOverride> manualBlockOverrides;
    double manualAudioOffsetSeconds = 0;
    std::optional<double> audioAnchorOffsetInAudioSeconds; ///< seconds from the start of the primary audio
    bool isApproved = false;
    std::optional<double> pictureClapAnchorSeconds; ///< seconds from the start of the video
    bool isLocked = false;
    std::optional<double> lockedAtAudioAnchor;
    std::optional<double> lockedAtPictureAnchor;
    std::optional<double> lockedAtManualOffset;
    SyncMethod syncMethod = SyncMethod::timecode;
    bool generateNativeMOSClip = false;
    std::optional<std::string> nativeMOSNameSuffix;
    std::optional<bool> generateProjectRateClipFlag;
    std::optional<std::string> projectRateNameSuffix;
    std::optional<std::string> manualClipName; ///< takes precedence over all naming rules
    bool isPickup = false;
    bool isExcludedFromExport = false;
    std::optional<bool> isExcludedFromMulticamFlag;
    double masterGainDB = 0;
    std::optional<double> measuredLUFS;
    bool masterGainAuto = true;

    const MediaAsset* primaryAudio() const {
        return audioMatches.empty() ? nullptr : &*audioMatches.front().audio;
    }
    bool isMOS() const { return audioMatches.empty(); }
    bool hasALEMetadata() const { return aleMetadata && !aleMetadata->empty(); }
    bool hasLockitMetadata() const { return lockitMetadata && !lockitMetadata->empty(); }
    bool hasManualTrackEdits() const { return tracksManuallyEdited.value_or(false); }
    bool shouldGenerateProjectRateClip() const { return generateProjectRateClipFlag.value_or(false); }
    bool isExcludedFromMulticam() const { return isExcludedFromMulticamFlag.value_or(false); }
    /// The clap point on the video's axis; the picture anchor takes precedence.
    std::optional<double> resolvedClapPointSeconds() const;

    bool operator==(const SyncGroup& other) const { return id == other.id; }
};

JSON toJSON(const MatchStatus& status);
JSON toJSON(SyncMethod method);
JSON toJSON(const AudioMatch& match);
JSON toJSON(const BlockOverride& override);
JSON toJSON(const SyncGroup& group);
template <>
MatchStatus fromJSON<MatchStatus>(const JSON& json);
template <>
SyncMethod fromJSON<SyncMethod>(const JSON& json);
template <>
AudioMatch fromJSON<AudioMatch>(const JSON& json);
template <>
BlockOverride fromJSON<BlockOverride>(const JSON& json);
template <>
SyncGroup fromJSON<SyncGroup>(const JSON& json);
template <>
AudioMatch fromJSON<AudioMatch>(const JSONView& json);
template <>
SyncGroup fromJSON<SyncGroup>(const JSONView& json);

} // namespace orvane
