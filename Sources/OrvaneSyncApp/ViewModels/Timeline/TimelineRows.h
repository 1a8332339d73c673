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

class TimelineController;
struct SmartAudioTerms;

/// A channel of the clip's take, as its row shows it.
struct TimelineChannel {
    int track = 1;        ///< running number, from 1
    std::string name;     ///< the recorder's; "Track 3" if it gave none
    bool isNamed = false; ///< by the recorder
    std::optional<ChannelKind> kind{};
    std::string why{}; ///< the classifier's reason; empty without an analysis
    bool isUsedByAlgorithm = true;
    bool isActive = true;              ///< switched on for the export
    bool isSolo = false;               ///< only this track is heard in the player
    bool isMuted = false;              ///< the player plays another track alone
    std::optional<int> sharePercent{}; ///< of the take's block time that is routed to this track
    int rangeCount = 0;                ///< ranges that the editor chose

    bool isHeard() const { return isSolo || (isActive && !isMuted); } ///< in the player

    // For people; each is empty if there is no text.
    std::string kindText() const;       ///< such as "Boom"
    std::string kindAndWhyText() const; ///< such as "Boom · iXML: Boom"
    std::string shareText() const;
    std::string rangesText() const;
    /// Name, kind, reason, share and ranges, one on each line.
    std::string tooltip() const;
};

/// A recording of the clip that is not part of its take.
struct TimelineRecording {
    UUID matchID;
    std::string name;
    int lane = 0;            ///< from 0, without gaps
    double startSeconds = 0; ///< clip time
    double endSeconds = 0;
};

/// What the timeline shows of a clip, without positions on the screen. All seconds are clip time except those
/// of `blocks`, which are take time. A plain value.
struct TimelineRows {
    UUID groupID;
    std::string pictureName;
    double clipSeconds = 0;
    double frameRate = 0; ///< at which the player counts
    bool isLocked = false;
    std::optional<double> pictureClapSeconds{};

    bool hasSound = false;
    std::string soundName;                 ///< of the take's files
    double soundOffset = 0;                ///< of the take's first sample
    double soundSeconds = 0;               ///< of the take; 0 if it is not known
    double primaryStart = 0;               ///< of the first recording's first sample, in take time
    std::optional<double> anchorSeconds{}; ///< of the sync anchor
    std::vector<TimelineChannel> channels{};
    std::vector<BlockDecision> blocks{}; ///< by start
    std::vector<BlockOverride> ranges{}; ///< by start
    std::vector<TimelineRecording> recordings{};
    int laneCount = 0;
    bool isAnalysed = false; ///< Smart Audio has read the recording
    /// Below the timeline's title: the result of Smart Audio for the clip.
    std::string summary;

    /// Sets another offset of the sound and moves everything that depends on it.
    void moveSound(double offsetSeconds);
    double soundEnd() const { return soundOffset + soundSeconds; }
    /// Null for a track that the take does not have.
    const TimelineChannel* channel(int track) const;
    /// Of the sound at its present position, such as "+0.240 s · +6f".
    std::string offsetText() const { return shiftText(soundOffset); }
    /// Seconds and frames, signed.
    std::string shiftText(double seconds) const;
    /// Track and position of a block, its reason, peak and gain.
    std::string tooltip(const BlockDecision& block) const;
    std::string tooltip(const BlockOverride& range) const;
    std::string tooltip(const TimelineRecording& recording) const;
};

/// `frameRate`: that of the clip's times (TimelineController::timelineFrameRate). `names`: names of the files
/// that are shown beside it. `madeWith`: options of the clip's analysis; null: not known. Interface thread.
TimelineRows timelineRows(const SyncGroup& group, double frameRate, const SmartAudioState& smartAudio,
                          const platform::SettingsStore& settings, const FileNames& names,
                          const SmartAudioTerms* madeWith);

/// The channels of the clip's take, by track.
std::vector<TimelineChannel> timelineChannels(const SyncGroup& group, const SmartAudioState& smartAudio);
/// The result of Smart Audio for the clip, or its progress.
std::string smartAudioSummary(const SyncGroup& group, const SmartAudioState& state,
                              const platform::SettingsStore& settings);

/// The opacity of a block on a strip, 0 to 1.
double tileOpacity(const BlockDecision& block);

/// Seconds of clip time in the form of tooltips, such as "1:05.20".
std::string momentText(double seconds);

/// Whether the sound of the clip in view was requested, but is missing or cannot be decoded. Interface
/// thread.
bool isSoundUnreadable(const TimelineController& timeline);
inline constexpr const char* unreadableSound =
    "The sound cannot be read. Connect its disk, or check the file.";

} // namespace orvane
