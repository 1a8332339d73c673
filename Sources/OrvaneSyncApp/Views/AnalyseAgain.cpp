#include "OrvaneSyncApp/Views/AnalyseAgain.h"

#include "OrvaneSyncApp/ViewModels/Results/Questions.h"

#include <utility>

namespace orvane::views {

namespace {

/// The stored mode may be Off, which would discard all results.
SmartAudioMode modeOfOutdated(Desktop& desktop) {
    const ImportController& controller = desktop.controller();
    for (const SyncGroup& clip : controller.work().syncGroups())
        if (controller.smartAudio().isOutdated(clip.id))
            return controller.smartAudio().termsOf(clip.id)->mode;
    const SmartAudioMode stored = modeOfAnalysis(desktop.settings());
    return stored == SmartAudioMode::off ? SmartAudioMode::standard : stored;
}

} // namespace

void runSmartAudioAgain(Desktop& desktop) {
    JSON arguments = JSON::object();
    arguments.set("mode", settings::smartAudioMode.write(modeOfOutdated(desktop)));
    arguments.set("forceOverwriteManualTracks", false);
    desktop.run("runSmartAudioAnalysis", std::move(arguments));
}

} // namespace orvane::views
