#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <utility>

namespace orvane {

// Only a mode that was stored counts: a scan by itself analyses nothing that nobody asked for.
platform::Task ImportController::startSmartAudioAfterScan(std::weak_ptr<ImportController> weak) {
    const auto self = weak.lock();
    if (!self) co_return;
    const auto tag = self->settings_->textIfPresent("smartAudioMode");
    const SmartAudioMode mode =
        tag ? smartAudioModeFromUITag(*tag).value_or(SmartAudioMode::off) : SmartAudioMode::off;
    if (mode != SmartAudioMode::off) co_await self->runSmartAudioAnalysis(mode, false);
}

// The analysis of the recordings takes its place here; until it stands, no clip has a result and every
// channel of a clip is heard.
platform::Task ImportController::runSmartAudioAnalysis(SmartAudioMode, bool) { co_return; }

} // namespace orvane
