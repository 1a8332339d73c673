#pragma once

#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/AudioFile.h"

#include <optional>
#include <string>

namespace orvane::cli {

/// What a command asks of an analysis of one file, with block routing, by the settings and by what the
/// recorder wrote into the file.
struct FileAnalysis {
    SmartAudioRequest request;
    MediaAsset asset;
};
/// `channels`: to look at; those of the file where absent. `file`: the same, open.
FileAnalysis fileAnalysis(const Context& context, const std::string& path, const platform::AudioFile& file,
                          SmartAudioMode mode, std::optional<int> channels = {});

} // namespace orvane::cli
