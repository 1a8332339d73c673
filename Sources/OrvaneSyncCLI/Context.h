#pragma once

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisCache.h"
#include "OrvaneSyncCore/Services/Stems/StemCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <iostream>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// A command that could not do what was requested. Ends with status 1 and one line "error: ...".
class CommandError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The environment of a command, so that tests can run it without a terminal.
struct Context {
    std::ostream& out;
    std::ostream& err;
    std::istream& in = std::cin;
    bool outIsTerminal = false;
    bool errIsTerminal = false;
    bool mayColour = false;                 ///< standard output is a terminal and NO_COLOR is not set
    int outWidth = 80;                      ///< columns
    int errWidth = 80;                      ///< columns
    std::string programName = "orvanesync"; ///< as the user called it, for examples
    std::vector<std::string> words{};       ///< of the command line, after the program's name
    std::shared_ptr<platform::SettingsStore> settings{};
    std::shared_ptr<const platform::Clock> clock = platform::systemClock();

    /// Opens the results of earlier probes. Called once, by a command that needs them.
    std::function<std::shared_ptr<ProbeCache>()> openProbeCache = ProbeCache::shared;
    std::function<std::shared_ptr<WaveformCache>()> openWaveformCache = WaveformCache::shared;
    std::function<std::shared_ptr<AnalysisCache>()> openAnalysisCache = AnalysisCache::shared;
    std::function<std::shared_ptr<const RenderedAudioStore>(std::shared_ptr<const platform::SettingsStore>)>
        openRenderedAudio = RenderedAudioStore::shared;
    /// The cache of recordings' stems, by the settings.
    std::shared_ptr<StemCache> openStems() const {
        return StemCache::bySettings(*settings, openRenderedAudio(settings));
    }

    /// The command line from the program's name on.
    std::vector<std::string> call() const {
        std::vector<std::string> all{programName};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    /// Prints one line "warning: ..." to standard error.
    void warn(std::string_view message) const;
};

} // namespace orvane::cli
