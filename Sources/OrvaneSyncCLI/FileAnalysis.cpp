#include "OrvaneSyncCLI/FileAnalysis.h"

#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "Platform/Files.h"

namespace orvane::cli {

FileAnalysis fileAnalysis(const Context& context, const std::string& path, const platform::AudioFile& file,
                          SmartAudioMode mode, std::optional<int> channels) {
    const FileURL url{platform::files::standardized(path)};
    FileAnalysis made{{}, MediaProbeService(context.settings, nullptr).probe(url, AssetKind::audio)};
    SmartAudioRequest& request = made.request;
    request.mode = mode;
    request.sound = url;
    request.channelCount = channels.value_or(made.asset.channelCount.value_or(file.channelCount()));
    if (made.asset.ixmlData) request.ixmlTracks = made.asset.ixmlData->tracks;
    if (mode == SmartAudioMode::custom)
        request.config = SmartAudioConfig::fromUserDefaults(*context.settings);
    request.blockSettings = SmartAudioBlockSettings::fromUserDefaults(*context.settings);
    return made;
}

} // namespace orvane::cli
