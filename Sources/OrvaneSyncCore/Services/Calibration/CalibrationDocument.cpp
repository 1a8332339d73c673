#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"

#include "FCPXMLKit/model/FCPXML.h"
#include "FCPXMLKit/xml/FCPXMLDTDFixer.h"

#include <cmath>
#include <utility>

namespace orvane::SmartAudioCalibration {

namespace {

using namespace fcpxml;

constexpr const char* role = "dialogue.Calibration";
constexpr double framesPerSecond = 24;

/// Values that are the same for all clips of the document.
struct Shared {
    Time duration;
    IDREF pictureFormat{"r1"}, clipFormat{"r2"}, soundFormat{"r3"}, picture{"r4"}, sound{"r5"};
};

Format pictureFormat(const char* id) {
    Format format;
    format.id = {id};
    format.name = "FFVideoFormat1080p24";
    format.frameDuration = Time(100, 2400);
    format.width = 1920;
    format.height = 1080;
    format.colorSpace = VideoColorSpace::rec709();
    return format;
}

std::vector<ResourceItem> resources(const FileURL& sourceURL, const FileURL& videoURL, const Time& duration,
                                    double sampleRate) {
    Format soundFormat;
    soundFormat.id = {"r3"};
    soundFormat.name = "FFVideoFormatRateUndefined";
    const auto asset = [&](const char* id, const char* name, const FileURL& file, const char* format) {
        Asset made;
        made.id = {id};
        made.name = name;
        made.start = Time::zero();
        made.duration = duration;
        made.format = IDREF{format};
        made.mediaReps.push_back({"original-media", file.absoluteString()});
        return made;
    };
    Asset picture = asset("r4", "CalibrationVideo", videoURL, "r1");
    picture.hasVideo = true;
    picture.videoSources = 1;
    Asset sound = asset("r5", "CalibrationAudio", sourceURL, "r3");
    sound.hasAudio = true;
    sound.audioSources = 1;
    sound.audioChannels = 1;
    sound.audioRate = static_cast<int>(sampleRate);
    std::vector<ResourceItem> items;
    items.emplace_back(pictureFormat("r1"));
    items.emplace_back(pictureFormat("r2"));
    items.emplace_back(std::move(soundFormat));
    items.emplace_back(std::move(picture));
    items.emplace_back(std::move(sound));
    return items;
}

/// An effect with the amount 0 is not used, whatever its other settings are.
AdjustAudioEnhanced effects(const CalibrationPerm& perm) {
    AdjustAudioEnhanced adjust;
    if (perm.loudnessAmount >= 1)
        adjust.loudness =
            AdjustLoudness{static_cast<double>(perm.loudnessAmount), static_cast<double>(perm.uniformity)};
    if (perm.voiceIsoAmount >= 1)
        adjust.voiceIsolation = AdjustVoiceIsolation{static_cast<double>(perm.voiceIsoAmount)};
    return adjust;
}

Clip soundClip(const std::string& name, const Shared& shared) {
    Audio channel;
    channel.ref = shared.sound;
    channel.offset = Time::zero();
    channel.start = Time::zero();
    channel.duration = shared.duration;
    channel.role = AudioRole{{role}};
    channel.srcCh = {1};
    Clip clip;
    clip.lane = -1;
    clip.offset = Time::zero();
    clip.name = name;
    clip.start = Time::zero();
    clip.duration = shared.duration;
    clip.format = shared.soundFormat;
    clip.adjust.conform = AdjustConform{AdjustConform::Type::fill};
    clip.items.emplace_back(std::move(channel));
    return clip;
}

SyncClip syncClip(const CalibrationPerm& perm, const Shared& shared) {
    const std::string name = calibrationClipName(perm);
    AssetClip picture;
    picture.ref = shared.picture;
    picture.offset = Time::zero();
    picture.name = name;
    picture.start = Time::zero();
    picture.duration = shared.duration;
    picture.format = shared.pictureFormat;
    picture.videoRole = VideoRole{{"video"}};
    picture.anchored.emplace_back(soundClip(name, shared));
    AudioRoleSource source;
    source.role = {{role}};
    source.adjust = effects(perm);
    SyncSource sources;
    sources.audioRoleSources.push_back(std::move(source));
    SyncClip clip;
    clip.offset = Time::zero();
    clip.name = name;
    clip.start = Time::zero();
    clip.duration = shared.duration;
    clip.format = shared.clipFormat;
    clip.item = std::move(picture);
    clip.syncSources.push_back(std::move(sources));
    return clip;
}

} // namespace

std::string buildFCPXML(const FileURL& sourceURL, const FileURL& videoURL, double sourceDurationSeconds,
                        double sourceSampleRate, const std::vector<CalibrationPerm>& perms,
                        const std::string& eventName) {
    Shared shared;
    shared.duration =
        Time(static_cast<std::int64_t>(std::llround(sourceDurationSeconds * framesPerSecond)) * 100, 2400);
    Event event;
    event.name = eventName;
    for (const CalibrationPerm& perm : perms) event.items.emplace_back(syncClip(perm, shared));
    FCPXML document;
    document.version = FCPXMLVersion::v1_14;
    document.resources.items = resources(sourceURL, videoURL, shared.duration, sourceSampleRate);
    Library library;
    library.items.push_back(std::move(event));
    document.items.push_back(std::move(library));
    XMLDocument tree = std::move(document).toXMLDocument();
    FCPXMLDTDFixer::fix(tree);
    return tree.text();
}

} // namespace orvane::SmartAudioCalibration
