#pragma once

#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"
#include "Support/InterfaceWatching.h"
#include "Support/TemporaryDirectory.h"

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace orvane::cli {

inline const bool isInterfaceWatched = test::watchInterfaceThreads();

struct Outcome {
    int status = 0;
    std::string out;
    std::string err;

    platform::JSON json() const { return platform::JSON::parse(out); }
};

/// Never uses the probe cache and the settings of the user who runs the tests.
inline Outcome runWith(std::vector<std::string> words, bool onTerminal = false,
                       const std::string& cacheFile = {},
                       std::shared_ptr<platform::SettingsStore> settings = nullptr) {
    const test::TemporaryDirectory folder;
    std::ostringstream out, err;
    Context context{out, err};
    context.errIsTerminal = onTerminal;
    context.openProbeCache = [&] {
        return std::make_shared<ProbeCache>(cacheFile.empty() ? folder.path("cache.json") : cacheFile);
    };
    context.openWaveformCache = [&] { return std::make_shared<WaveformCache>(folder.path("waveforms")); };
    context.openAnalysisCache = [&] { return std::make_shared<AnalysisCache>(folder.path("analyses")); };
    context.openRenderedAudio = [&](auto store) {
        return std::make_shared<const RenderedAudioStore>(folder.path("rendered"), std::move(store));
    };
    context.settings = settings ? std::move(settings) : std::make_shared<platform::MemorySettingsStore>();
    registerStandardDefaults(*context.settings);
    const int status = run(words, context);
    return {status, out.str(), err.str()};
}

} // namespace orvane::cli
