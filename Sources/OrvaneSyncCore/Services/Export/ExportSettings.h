#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SettingsSnapshot.h"
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

/// All decisions of an export: the exporter reads nothing else.
struct ExportSettings : SettingsSnapshot {
    using SettingsSnapshot::SettingsSnapshot;

    // A value that one stored setting gives is read as from the store: `settings.get(settings::trimMode)`.

    // The following values are derived from several settings or from the clips.

    double frameRate = 24.0; ///< of the main format and of all times that belong to no single clip
    /// Rate of a clip that states none; a clip with another rate gets a warning.
    double projectFrameRate = 24.0;
    int outputWidth = 1920; ///< native frame, pixels
    int outputHeight = 1080;
    int alternateWidth = settings::alternateWidth.standard(); ///< container, pixels
    int alternateHeight = settings::alternateHeight.standard();
    fcpxml::FCPXMLVersion fcpxmlVersion = fcpxml::FCPXMLVersion::v1_14;
    std::map<int, std::string> subroleMap; ///< by track, from 1
    int defaultAudioTracks = 2;            ///< channels of an audio file whose count is unknown
    SmartAudioResults smartAudioResults;   ///< by group
    std::optional<FileURL> atmoFileURL;    ///< room tone to add
    double atmoDurationSeconds = 180.0;
    std::string metadataPrefix; ///< put before every mapped metadata value
    LockitFieldMapping lockitFieldMapping;
    double globalAudioOffsetSeconds = 0; ///< added to all sound of the export
    /// The first clip to which the offset applies, by name or by timecode; both absent: all clips.
    std::optional<std::string> globalAudioOffsetStartingFromFilename;
    std::optional<std::string> globalAudioOffsetStartingFromTC;
    std::optional<std::string> customNamingPattern;
    MatchRules matchRules; ///< rules by which the sound was matched to the pictures

    /// Inputs that are not in the settings store.
    struct Request {
        std::string eventName = settings::eventName.standard();
        const MediaAsset* sourceVideo = nullptr; ///< its size becomes the native frame size
        std::optional<int> aspectAnchorWidth;    ///< the width from which a container's height is computed
        bool generateMulticam = settings::generateMulticam.standard();
        SyncGroupList groups; ///< their rates decide the frame rate
        SmartAudioResults smartAudioResults;
        std::optional<FileURL> atmoFileURL;
        std::optional<std::string> atmoAudioRoleOverride; ///< replaces the stored one
        std::optional<double> atmoDurationOverride;       ///< seconds; replaces the stored one
        std::string metadataPrefix;
        MatchRules matchRules;
    };

    static ExportSettings fromUserDefaults(const platform::SettingsStore& store, const Request& request);
};

} // namespace orvane
