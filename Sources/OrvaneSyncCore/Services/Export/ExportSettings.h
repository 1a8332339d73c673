#pragma once

#include "FCPXMLKit/model/FCPXMLVersion.h"
#include "OrvaneSyncCore/Models/Settings.h"
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

/// A record whose members are settings, each with its declaration: `TrimMode trimMode =
/// of(settings::trimMode);`. Constructed without a store it holds the defaults.
class ReadFromSettings {
  protected:
    ReadFromSettings() = default;
    explicit ReadFromSettings(const platform::SettingsStore& store) : store_(&store) {}

    template <class T>
    T of(const platform::Setting<T>& setting) const {
        return store_ == nullptr ? setting.standard() : store_->get(setting);
    }
    /// Call at the end of the construction; the store is not used after it.
    void isRead() { store_ = nullptr; }

  private:
    const platform::SettingsStore* store_ = nullptr;
};

/// All inputs of an export besides the clips: the exporter reads no other settings.
struct ExportSettings : ReadFromSettings {
    ExportSettings() = default;
    /// Reads the store; a value that is not valid is replaced by the default.
    explicit ExportSettings(const platform::SettingsStore& store) : ReadFromSettings(store) { isRead(); }

    // These are used as they are stored.

    std::string eventName = of(settings::eventName);
    std::string audioBaseRole = of(settings::audioBaseRole); ///< the part before "." of every audio role
    bool useIXMLTrackNames = of(settings::useIXMLTrackNames);
    bool generateMulticam = of(settings::generateMulticam);
    bool generateSyncClips = of(settings::generateSyncClips);
    bool wrapMOSInSyncClip = of(settings::wrapMOSInSyncClip);
    VideoResolutionMode videoResolution = of(settings::videoResolution);
    SpatialConformType spatialConform = of(settings::spatialConform);
    bool overrideAnamorphic = of(settings::overrideAnamorphic);
    TrimMode trimMode = of(settings::trimMode);
    std::string atmoAudioRole = of(settings::atmoAudioRole);
    bool generateNativeMOSForOffspeed = of(settings::generateNativeMOS);
    std::string nativeMOSSuffix = of(settings::nativeMOSSuffix);
    bool separateEventForNativeMOS = of(settings::nativeMOSSeparateEvent);
    std::string nativeMOSEventName = of(settings::nativeMOSEventName);
    bool wrapNativeMOSInSyncClip = of(settings::wrapNativeMOSInSyncClip);
    bool generateProjectRateForOffspeed = of(settings::generateProjectRate);
    std::string projectRateSuffix = of(settings::projectRateSuffix);
    bool separateEventForProjectRate = of(settings::projectRateSeparateEvent);
    std::string projectRateEventName = of(settings::projectRateEventName);
    bool offspeedAutoKeyword = of(settings::offspeedAutoKeyword);
    bool generateRawMediaEvent = of(settings::generateRawMediaEvent);
    std::string rawMediaEventName = of(settings::rawMediaEventName);
    bool splitEventsByScene = of(settings::splitEventsByScene);
    std::string eventNamePattern = of(settings::eventNamePattern);
    NotesSource notesSource = of(settings::notesSource);
    std::string notesVideoPrefix = of(settings::notesVideoPrefix);
    std::string notesAudioPrefix = of(settings::notesAudioPrefix);
    MulticamCodec multicamCodec = of(settings::multicamCodec);
    ClipNamingSource clipNamingSource = of(settings::clipNamingSource);
    std::string namingSeparator = of(settings::namingSeparator);
    bool volumeKeyframes = of(settings::volumeKeyframes);

    // These are derived from several settings or from the clips.

    double frameRate = 24.0;        ///< of the main format and of all times not tied to one clip
    double projectFrameRate = 24.0; ///< rate of a clip that states none; clips of another rate are warned of
    int outputWidth = 1920;         ///< native frame, pixels
    int outputHeight = 1080;
    int alternateWidth = of(settings::alternateWidth); ///< container, pixels
    int alternateHeight = of(settings::alternateHeight);
    fcpxml::FCPXMLVersion fcpxmlVersion = fcpxml::FCPXMLVersion::v1_14;
    std::map<int, std::string> subroleMap; ///< by track, from 1
    int defaultAudioTracks = 2;            ///< channels of an audio file whose count is unknown
    SmartAudioResults smartAudioResults;   ///< by group
    std::optional<FileURL> atmoFileURL;    ///< room tone to add
    double atmoDurationSeconds = 180.0;
    std::string metadataPrefix; ///< of every mapped metadata value
    LockitFieldMapping lockitFieldMapping;
    double globalAudioOffsetSeconds = 0; ///< added to all audio of the export
    /// The first clip to which the offset applies, by name or by timecode; both absent: all clips.
    std::optional<std::string> globalAudioOffsetStartingFromFilename;
    std::optional<std::string> globalAudioOffsetStartingFromTC;
    std::optional<std::string> customNamingPattern;
    MatchRules matchRules; ///< by which the sound was matched to the pictures

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
