#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"

#include "OrvaneSyncCore/Utilities/FilenameUtils.h"

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr int roomToneSampleRate = 48000;
constexpr int roomToneLane = -10;

/// A clip of a sound file without picture, at the start of its event.
AssetClip soundClip(const Asset& asset, const Time& duration, const ExportSettings& settings) {
    AssetClip clip;
    clip.ref = {asset.id.value};
    clip.offset = Time::zero();
    clip.name = asset.name;
    clip.start = Time::zero();
    clip.duration = duration;
    clip.audioRole = AudioRole{{settings.get(settings::atmoAudioRole)}};
    clip.videoRole = VideoRole{{"video"}};
    return clip;
}

} // namespace

void addRoomTone(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    if (!settings.atmoFileURL) return;
    const double seconds = settings.atmoDurationSeconds;
    const MediaAsset file(*settings.atmoFileURL, AssetKind::audio);
    Asset asset = audioAsset(file, run.resources.nextID(), 1, settings);
    asset.name = file.filenameStem();
    asset.start = Time::zero();
    asset.duration = soundDuration(seconds, roomToneSampleRate).value_or(Time::zero());

    AssetClip clip = soundClip(asset, soundLength(asset.duration, usableRate(settings.frameRate)), settings);
    clip.lane = roomToneLane;
    run.resources.add(asset);
    run.place(clip, nullptr);
}

void addWildTracks(ExportRun& run) {
    for (const WildTrack& track : run.wildTracks) {
        if (!track.isApproved) continue;
        Asset asset = audioAsset(track.audio, run.resources.nextID(), 1, run.settings);
        asset.name = track.customName;
        asset.start = Time::zero();
        asset.duration =
            soundDuration(track.audio.durationSeconds, audioRate(track.audio)).value_or(Time::zero());
        AssetClip clip =
            soundClip(asset, soundLength(asset.duration, usableRate(run.settings.frameRate)), run.settings);
        run.resources.add(asset);
        run.place(clip, nullptr);
    }
}

} // namespace orvane::FCPXMLExporter
