#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/SmartAudioResults.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "Platform/SettingsStore.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Every decision of an export: the exporter reads nothing else. The defaults are those of an empty store.
struct ExportSettings {
    std::string eventName = "Synced";
    double frameRate = 24.0;        ///< of the main format and of all times not tied to one clip
    double projectFrameRate = 24.0; ///< to which a clip's position conforms; also decides what is offspeed
    int outputWidth = 1920;         ///< native frame, pixels
    int outputHeight = 1080;
    fcpxml::FCPXMLVersion fcpxmlVersion = fcpxml::FCPXMLVersion::v1_14;
    std::string audioBaseRole = "dialogue"; ///< the part before "." of every audio role
    bool useIXMLTrackNames = true;          ///< the recorder's name of a track goes before its subrole
    std::map<int, std::string> subroleMap;  ///< by track, from 1
    int defaultAudioTracks = 2;             ///< channels of an audio file whose count is unknown
    bool generateMulticam = true;
    bool generateSyncClips = true;
    SmartAudioResults smartAudioResults; ///< by group
    bool wrapMOSInSyncClip = true;       ///< a clip without audio goes out as a video-only sync-clip
    VideoResolutionMode videoResolution = VideoResolutionMode::useVideoFrameSize;
    int alternateWidth = 1920; ///< container, pixels
    int alternateHeight = 1080;
    SpatialConformType spatialConform = SpatialConformType::fill;
    bool overrideAnamorphic = false; ///< carried, without effect on the document
    TrimMode trimMode = TrimMode::commonDuration;
    std::optional<FileURL> atmoFileURL; ///< room tone to add
    std::string atmoAudioRole = "effects.atmosphere";
    double atmoDurationSeconds = 180.0;
    bool generateNativeMOSForOffspeed = false;
    std::string nativeMOSSuffix = "[{fps} FPS]"; ///< {fps} is the sensor rate
    bool separateEventForNativeMOS = false;
    std::string nativeMOSEventName = "Native MOS";
    bool wrapNativeMOSInSyncClip = false;
    bool generateProjectRateForOffspeed = false;
    std::string projectRateSuffix = "{fps}fps"; ///< {fps} is the project rate
    bool separateEventForProjectRate = false;
    std::string projectRateEventName = "Project Rate";
    bool offspeedAutoKeyword = true;
    bool generateRawMediaEvent = true; ///< an event with every source file
    std::string rawMediaEventName = "Source Media";
    bool splitEventsByScene = false;
    std::string eventNamePattern = "{eventName} {scene:3}"; ///< of a scene's event
    NotesSource notesSource = NotesSource::both;
    std::string notesVideoPrefix = "V:";
    std::string notesAudioPrefix = "A:";
    std::string metadataPrefix; ///< of every mapped metadata value
    LockitFieldMapping lockitFieldMapping;
    MulticamCodec multicamCodec = MulticamCodec::automatic;
    double globalAudioOffsetSeconds = 0; ///< added to all audio of the export
    /// The first clip that the offset applies to, by name or by timecode; absent: to every clip.
    std::optional<std::string> globalAudioOffsetStartingFromFilename;
    std::optional<std::string> globalAudioOffsetStartingFromTC;
    GroupNaming::Source clipNamingSource = GroupNaming::Source::sceneTake;
    std::optional<std::string> customNamingPattern;
    std::string namingSeparator = "-";
    MatchRules matchRules;        ///< by which the sound was laid against the pictures
    bool volumeKeyframes = false; ///< Smart Audio's choice over time, as volumes of the channels

    /// What the settings store does not hold.
    struct Request {
        std::string eventName = "Synced";
        const MediaAsset* sourceVideo = nullptr; ///< gives the native frame size
        std::optional<int> aspectAnchorWidth;    ///< the width that a container's height is computed from
        bool generateMulticam = true;
        SyncGroupList groups; ///< vote on the frame rate
        SmartAudioResults smartAudioResults;
        std::optional<FileURL> atmoFileURL;
        std::optional<std::string> atmoAudioRoleOverride; ///< wins over the stored one
        std::optional<double> atmoDurationOverride;       ///< seconds; wins over the stored one
        std::string metadataPrefix;
        MatchRules matchRules;
    };

    /// Sets every field. A text that names no case reads as the default.
    static ExportSettings fromUserDefaults(const platform::SettingsStore& store, const Request& request);
};

} // namespace orvane
