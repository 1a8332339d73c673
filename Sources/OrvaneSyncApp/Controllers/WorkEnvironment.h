#pragma once

#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"

#include <memory>

namespace orvane {

class AnalysisCache;
class WaveformCache;
class RenderedAudioStore;
class StemCache;

/// What the open work needs from outside; shared by its controllers.
struct WorkEnvironment {
    std::shared_ptr<platform::MainThread> mainThread;
    std::shared_ptr<platform::SettingsStore> settings;
    std::shared_ptr<const platform::Clock> clock;
    std::shared_ptr<WaveformCache> waveformCache = nullptr; ///< null: none are kept
    /// Null: nothing is rendered.
    std::shared_ptr<const RenderedAudioStore> renderedAudio = nullptr;
    std::shared_ptr<StemCache> stems = nullptr;        ///< null: analyses go without stems
    std::shared_ptr<AnalysisCache> analyses = nullptr; ///< null: analyses are not stored
};

} // namespace orvane
