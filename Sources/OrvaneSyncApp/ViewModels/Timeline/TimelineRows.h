#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioState.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "Platform/SettingsStore.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// A channel of the clip's take, as its row shows it.
struct TimelineChannel {
    int track = 1;        ///< running number, from 1
    std::string name;     ///< the recorder's; "Track 3" where it gave none
    bool isNamed = false; ///< by the recorder
    std::optional<ChannelKind> kind{};
    std::string why{}; ///< the classifier's reason; empty without an analysis
    bool isUsedByAlgorithm = true;
    bool isActive = true;              ///< switched on for the export
    bool isSolo = false;               ///< heard alone in the player
    std::optional<int> sharePercent{}; ///< of the take's block time that is routed here
    int rangeCount = 0;                ///< chosen by hand

    // For people; each is empty where there is nothing to say.
    std::string kindText() const;       ///< such as "Boom"
    std::string kindAndWhyText() const; ///< such as "Boom · iXML: Boom"
    std::string shareText() const;
    std::string rangesText() const;
    /// Name, kind, why, share and ranges, a line each.
    std::string tooltip() const;
};

/// A recording of the clip that is no part of its take.
struct TimelineRecording {
    UUID matchID;
    std::string name;
    int lane = 0;            ///< from 0, without gaps
    double startSeconds = 0; ///< clip time
    double endSeconds = 0;
};

/// What the timeline shows of a clip, without where it lies on the screen. All seconds are clip time but
/// those of `blocks`, which are take time. A plain value.
struct TimelineRows {
    UUID groupID;
    std::string pictureName;
    double clipSeconds = 0;
    double frameRate = 0; ///< of the player
    bool isLocked = false;
    std::optional<double> pictureClapSeconds{};

    bool hasSound = false;
    std::string soundName;                 ///< of the take's files
    double soundOffset = 0;                ///< of the take's first sample
    double soundSeconds = 0;               ///< of the take; 0 where it is not known
    double primaryStart = 0;               ///< of the first recording's first sample, in take time
    std::optional<double> anchorSeconds{}; ///< of the sync anchor
    std::vector<TimelineChannel> channels{};
    std::vector<BlockDecision> blocks{}; ///< by start
    std::vector<BlockOverride> ranges{}; ///< by start
    std::vector<TimelineRecording> recordings{};
    int laneCount = 0;
    bool isAnalysed = false; ///< Smart Audio has heard the recording
    /// Below the timeline's title: what Smart Audio has made of the clip.
    std::string summary;

    /// The sound lies elsewhere: all that goes along with it.
    void moveSound(double offsetSeconds);
    double soundEnd() const { return soundOffset + soundSeconds; }
    /// Null for a track that the take does not have.
    const TimelineChannel* channel(int track) const;
    /// Of the sound as it lies, such as "+0.240 s · +6f".
    std::string offsetText() const { return shiftText(soundOffset); }
    /// Seconds and frames, signed.
    std::string shiftText(double seconds) const;
    /// Track and place of a block, its reason, peak and gain.
    std::string tooltip(const BlockDecision& block) const;
    std::string tooltip(const BlockOverride& range) const;
    std::string tooltip(const TimelineRecording& recording) const;
};

/// `frameRate`: of the clip's times (TimelineController::timelineFrameRate). `names`: of the files that are
/// shown beside it. Interface thread.
TimelineRows timelineRows(const SyncGroup& group, double frameRate, const SmartAudioState& smartAudio,
                          const platform::SettingsStore& settings, const FileNames& names);

/// The channels of the clip's take, by track.
std::vector<TimelineChannel> timelineChannels(const SyncGroup& group, const SmartAudioState& smartAudio);
/// What Smart Audio has made of the clip, or is doing.
std::string smartAudioSummary(const SyncGroup& group, const SmartAudioState& state,
                              const platform::SettingsStore& settings);

/// How strongly a block is drawn on a strip, 0 to 1.
double tileOpacity(const BlockDecision& block);

/// Seconds of clip time as tooltips have them, such as "1:05.20".
std::string momentText(double seconds);

} // namespace orvane
