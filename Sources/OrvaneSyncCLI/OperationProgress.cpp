#include "OrvaneSyncCLI/OperationProgress.h"

#include "OrvaneSyncCLI/ProgressLine.h"

namespace orvane::cli {

std::optional<SmartAudioProgress> operationProgress(const ImportController& controller, ImportField field) {
    const auto ifCounted = [](const SmartAudioProgress& progress) {
        return progress.total > 0 ? std::optional(progress) : std::nullopt;
    };
    switch (field) {
    case ImportField::progress: {
        const ScanProgress& scan = controller.scan().progress();
        return ifCounted({scan.phase, scan.current, scan.total, scan.fraction()});
    }
    case ImportField::lockit: {
        const LockitController::Progress& asked = controller.lockit().progress();
        if (!controller.lockit().isSyncingLockit() || asked.days == 0) return std::nullopt;
        return SmartAudioProgress{"LockitNetwork", asked.day, asked.days,
                                  static_cast<double>(asked.day) / asked.days};
    }
    case ImportField::smartAudioProgress: {
        const SmartAudioState& state = controller.smartAudio().state();
        return ifCounted(state.progress.total > 0 ? state.progress : state.rendering);
    }
    case ImportField::slates:
        return ifCounted(controller.slates().progress());
    case ImportField::atmo:
        return ifCounted(controller.atmo().state().progress);
    case ImportField::models:
        for (const ModelInfo& model : controller.models().models())
            if (model.status.kind == ModelStatus::Kind::downloading)
                return SmartAudioProgress{"Downloading " + model.name, 0, 1, model.status.progress};
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

void showProgress(ProgressLine& line, const ImportController& controller, ImportField field) {
    if (const auto progress = operationProgress(controller, field))
        line.show({progress->phase, progress->current, progress->total}, progress->fraction);
}

} // namespace orvane::cli
