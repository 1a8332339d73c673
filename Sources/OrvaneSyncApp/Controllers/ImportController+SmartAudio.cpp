#include "OrvaneSyncApp/Controllers/ImportController.h"

#include <utility>

namespace orvane {

// Only a mode that was stored counts: a scan by itself analyses nothing that nobody asked for.
platform::Task ImportController::startSmartAudioAfterScan(std::weak_ptr<ImportController> weak) {
    auto self = weak.lock();
    if (!self) co_return;
    const auto tag = self->settings_->textIfPresent("smartAudioMode");
    const SmartAudioMode mode =
        tag ? smartAudioModeFromUITag(*tag).value_or(SmartAudioMode::off) : SmartAudioMode::off;
    self.reset();
    if (mode != SmartAudioMode::off) co_await analyse(weak, mode, false);
}

// The analysis of the recordings takes its place here; until it stands, no clip has a result and every
// channel of a clip is heard.
platform::Task ImportController::analyse(std::weak_ptr<ImportController>, SmartAudioMode, bool) { co_return; }

platform::Task ImportController::runSmartAudioAnalysis(SmartAudioMode mode, bool forceOverwriteManualTracks) {
    assertOnMainThread();
    return analyse(weak_from_this(), mode, forceOverwriteManualTracks);
}

} // namespace orvane
