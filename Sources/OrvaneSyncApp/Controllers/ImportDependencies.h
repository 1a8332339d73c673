#pragma once

#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"

#include <memory>

namespace orvane {

class AnalysisCache;
class ProbeCache;
class RenderedAudioStore;
class SlateDetector;
class StemCache;
class WaveformCache;

/// What an `ImportController` needs. The first two are required.
struct ImportDependencies {
    std::shared_ptr<platform::MainThread> mainThread;
    std::shared_ptr<platform::SettingsStore> settings;
    /// Null: probe results are neither looked up nor stored.
    std::shared_ptr<ProbeCache> probeCache;
    std::shared_ptr<const platform::Clock> clock = platform::systemClock();
    /// Null: waveforms are made when they are shown, and not stored.
    std::shared_ptr<WaveformCache> waveformCache = nullptr;
    /// Null: the detector of this machine.
    std::shared_ptr<SlateDetector> slateDetector = nullptr;
    /// Null: no sound is rendered for the player.
    std::shared_ptr<const RenderedAudioStore> renderedAudio = nullptr;
    /// Null: recordings are analysed without stems.
    std::shared_ptr<StemCache> stems = nullptr;
    /// Null: results of analyses are neither looked up nor stored.
    std::shared_ptr<AnalysisCache> analyses = nullptr;
};

} // namespace orvane
