#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <array>
#include <memory>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

constexpr std::array<std::string_view, 2> matrices{"sweet", "coarse"};

void expectNoProblem(const CalibrationController& calibration) {
    if (!calibration.state().problem.empty()) throw Error(Refusal::failed, calibration.state().problem);
}

platform::Task build(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const auto matrix =
        call.textIfPresent("matrix") == "coarse" ? CalibrationMatrix::coarse : CalibrationMatrix::sweetSpot;
    const platform::Task building = controller->calibration().buildMatrix(matrix);
    co_await building;
    expectNoProblem(controller->calibration());
    answer->set("document", SmartAudioCalibration::documentFile().absoluteString());
    answer->set("clips", static_cast<std::int64_t>(permsOf(matrix).size()));
    answer->set("source", toJSON(*controller->calibration().state().sourceInfo));
}

platform::Task measured(std::shared_ptr<ImportController> controller, FileURL folder,
                        std::shared_ptr<JSON> answer) {
    if (!controller->calibration().state().sourceInfo) {
        const platform::Task looking = controller->calibration().refreshState();
        co_await looking;
        expectNoProblem(controller->calibration());
    }
    const platform::Task measuring = controller->calibration().measure(std::move(folder));
    co_await measuring;
    expectNoProblem(controller->calibration());
    if (const auto& result = controller->calibration().state().measurement) *answer = toJSON(*result);
}

platform::Task measure(CommandContext& context, const Call& call, const std::shared_ptr<JSON>& answer) {
    return lookUp(
        context.controller, [path = call.text("folder")] { return readableFolder(path); },
        [answer](std::shared_ptr<ImportController> controller, FileURL folder) {
            return measured(std::move(controller), std::move(folder), answer);
        });
}

platform::Task save(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> /*answer*/) {
    const auto controller = context.controller;
    if (!controller->calibration().state().measurement)
        throw Error(Refusal::failed, "nothing was measured that could be saved");
    const platform::Task saving = controller->calibration().save();
    co_await saving;
    expectNoProblem(controller->calibration());
}

platform::Task show(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const platform::Task looking = controller->calibration().refreshState();
    co_await looking;
    const CalibrationState& state = controller->calibration().state();
    answer->set("hasMatrixOnDisk", state.hasMatrixOnDisk);
    if (state.sourceInfo) answer->set("source", toJSON(*state.sourceInfo));
    if (state.savedCalibration) answer->set("savedCalibration", toJSON(*state.savedCalibration));
}

} // namespace

std::vector<Command> calibrationCommands() {
    return {
        Command::later("calibrationBuild", "Build Calibration Matrix",
                       "Builds the source, the picture and the document that Final Cut Pro is measured with.",
                       {{.name = "matrix", .kind = text, .isOptional = true, .choices = matrices}}, build)
            .alsoBy({"calibrate"}),
        Command::later("calibrationMeasure", "Measure Calibration",
                       "Measures the files that were bounced from the calibration's clips.",
                       {{"folder", path}}, measure)
            .alsoBy({"calibrate"}),
        Command::later("calibrationSave", "Save Calibration",
                       "Makes what was measured the calibration that forecasts use.", {}, save)
            .alsoBy({"calibrate"}),
        Command::later("calibration", "Calibration", "Gives the calibration that is stored.", {}, show)
            .alsoBy({"calibrate"}),
    };
}

} // namespace orvane::commands
