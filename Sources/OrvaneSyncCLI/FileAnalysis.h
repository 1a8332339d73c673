#pragma once

#include "OrvaneSyncCLI/Context.h"
#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "Platform/AudioFile.h"

#include <optional>
#include <string>

namespace orvane::cli {

/// The analysis of one file with block routing that a command requests, by the settings and by what the
/// recorder wrote into the file.
struct FileAnalysis {
    SmartAudioRequest request;
    MediaAsset asset;
};
/// `channels`: the ones to analyse; if absent, those of the file. `file`: the same file, open.
FileAnalysis fileAnalysis(const Context& context, const std::string& path, const platform::AudioFile& file,
                          SmartAudioMode mode, std::optional<int> channels = {});

} // namespace orvane::cli
