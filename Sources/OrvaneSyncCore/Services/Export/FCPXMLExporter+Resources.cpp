#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

std::string ResourceList::nextID() {
    std::string id = "r";
    return id.append(std::to_string(++counter_));
}

void setMedia(Asset& asset, const FileURL& url, const ExportSettings& settings) {
    std::string location = url.absoluteString();
    if (settings.fcpxmlVersion <= FCPXMLVersion::v1_8)
        asset.src = std::move(location);
    else
        asset.mediaReps.push_back({.kind = "original-media", .src = std::move(location)});
}

Asset videoAsset(const MediaAsset& video, std::string id, std::string formatID,
                 const ExportSettings& settings) {
    Asset asset;
    asset.id = {std::move(id)};
    asset.name = video.normalizedName();
    asset.hasVideo = true;
    asset.format = IDREF{std::move(formatID)};
    asset.videoSources = 1;
    const double fps = clipRate(video, settings);
    asset.start = pictureStartTime(video, fps);
    asset.duration = pictureDuration(video, fps);
    setMedia(asset, video.url, settings);
    return asset;
}

Format nativeFormat(const MediaAsset& video, std::string id, const ExportSettings& settings) {
    Format format;
    format.id = {std::move(id)};
    format.frameDuration = frameDurationTime(usableRate(video.frameRate, clipRate(video, settings)));
    format.width = video.width.value_or(settings.outputWidth);
    format.height = video.height.value_or(settings.outputHeight);
    return format;
}

Asset audioAsset(const MediaAsset& audio, std::string id, int channelsIfUnknown,
                 const ExportSettings& settings) {
    Asset asset;
    asset.id = {std::move(id)};
    asset.hasAudio = true;
    asset.audioSources = 1;
    asset.audioChannels = audio.channelCount.value_or(channelsIfUnknown);
    asset.audioRate = audioRate(audio);
    setMedia(asset, audio.url, settings);
    return asset;
}

Asset recordingAsset(const MediaAsset& audio, std::string id, const ExportSettings& settings) {
    Asset asset = audioAsset(audio, std::move(id), settings.defaultAudioTracks, settings);
    asset.name = audio.normalizedName();
    asset.start = audioStartTime(audio).value_or(Time::zero());
    asset.duration = soundDuration(audio.durationSeconds, audioRate(audio));
    return asset;
}

} // namespace orvane::FCPXMLExporter
