#include "OrvaneSyncApp/Views/AnalyseAgain.h"

#include "OrvaneSyncApp/ViewModels/Results/Questions.h"

#include <utility>

namespace orvane::views {

void runSmartAudioAgain(Desktop& desktop) {
    JSON arguments = JSON::object();
    arguments.set("mode", settings::smartAudioMode.write(modeOfAnalysis(desktop.settings())));
    arguments.set("forceOverwriteManualTracks", false);
    desktop.run("runSmartAudioAnalysis", std::move(arguments));
}

} // namespace orvane::views
