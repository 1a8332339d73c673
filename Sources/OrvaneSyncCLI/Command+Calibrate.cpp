#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

namespace orvane::cli {

namespace {

/// The calibration of the user account, on its own run loop.
class CalibrationRun {
  public:
    CalibrationRun(Context& context, const Arguments& arguments)
        : loop_(platform::RunLoop::create()), progress_(context, arguments.has("--quiet")) {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = loop_;
        dependencies.settings = context.settings;
        dependencies.clock = context.clock;
        controller_ = ImportController::create(std::move(dependencies));
    }

    CalibrationController& calibration() { return controller_->calibration(); }
    const CalibrationState& state() const { return controller_->calibration().state(); }
    /// Throws CommandError with the problem that the calibration reported.
    void wait(const platform::Task& operation, std::string_view phase) {
        progress_.show({std::string(phase), 0, 0});
        runUntilDone(*loop_, operation);
        progress_.clear();
        if (!state().problem.empty()) throw CommandError(state().problem);
    }

  private:
    std::shared_ptr<platform::RunLoop> loop_;
    ProgressLine progress_;
    std::shared_ptr<ImportController> controller_;
};

void print(Context& context, const CalibrationResult& result) {
    Table table({{"VOICE ISOLATION", Table::Align::right},
                 {"LOUDNESS", Table::Align::right},
                 {"UNIFORMITY", Table::Align::right},
                 {"PEAK dB", Table::Align::right},
                 {"RMS dB", Table::Align::right},
                 {"LUFS", Table::Align::right}});
    for (const CalibrationRow& row : calibrationRows(result))
        table.add({std::to_string(row.perm.voiceIsoAmount), std::to_string(row.perm.loudnessAmount),
                   std::to_string(row.perm.uniformity), row.peak.text, row.rms.text, row.lufs.text});
    context.out << table.text(context.mayColour);
}

void build(Context& context, const Arguments& arguments, CalibrationRun& run) {
    const std::string named = arguments.value("--matrix").value_or("sweet");
    if (named != "sweet" && named != "coarse") throw UsageError("--matrix must be sweet or coarse");
    const auto matrix = named == "coarse" ? CalibrationMatrix::coarse : CalibrationMatrix::sweetSpot;
    if (const auto source = arguments.value("--source")) {
        if (const std::string why = whyUnreadable(*source, false); !why.empty())
            throw CommandError("can't read '" + *source + "': " + why);
        context.settings->setOverride(settings::calibInputAudio, platform::files::standardized(*source));
    }
    run.wait(run.calibration().buildMatrix(matrix), "Building the calibration...");
    const FileURL document = SmartAudioCalibration::documentFile();
    const auto& source = *run.state().sourceInfo;
    const auto clips = static_cast<std::int64_t>(permsOf(matrix).size());
    if (arguments.has("--json")) {
        JSON json;
        json.set("document", document.absoluteString());
        json.set("clips", clips);
        json.set("source", toJSON(source));
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    context.out << "Wrote " << platform::text::printable(document.path) << "\n"
                << formatted("The source has %.1f LUFS.\n", source.integratedLUFS)
                << "1. Import the document into Final Cut Pro.\n"
                << "2. Select all " << clips
                << " clips of the event and share them as audio only, WAV, into an "
                << "empty folder.\n"
                << "3. orvanesync calibrate measure FOLDER\n";
}

void measure(Context& context, const Arguments& arguments, CalibrationRun& run) {
    const std::string& folder = arguments.positionals()[1];
    if (const std::string why = whyUnreadable(folder, true); !why.empty())
        throw CommandError("can't read '" + folder + "': " + why);
    run.wait(run.calibration().refreshState(), "Measuring the source...");
    run.wait(run.calibration().measure({platform::files::standardized(folder)}), "Measuring...");
    run.wait(run.calibration().save(), "Saving...");
    const CalibrationResult& result = *run.state().savedCalibration;
    if (arguments.has("--json"))
        context.out << toJSON(result).dump(JSON::Layout::pretty) << "\n";
    else
        print(context, result);
}

void show(Context& context, const Arguments& arguments) {
    const auto saved = SmartAudioCalibration::loadSaved();
    if (arguments.has("--json"))
        context.out << (saved ? toJSON(*saved) : JSON()).dump(JSON::Layout::pretty) << "\n";
    else if (saved)
        print(context, *saved);
    else
        context.out << "No calibration: forecasts use an estimate.\n";
}

void calibrate(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const std::string verb = words.empty() ? "show" : words.front();
    if (verb != "build" && verb != "measure" && verb != "show")
        throw UsageError("calibrate must be followed by build, measure or show, not '" + verb + "'");
    if (words.size() > (verb == "measure" ? 2U : 1U) || (verb == "measure" && words.size() != 2))
        throw UsageError(verb == "measure" ? "calibrate measure takes one folder"
                                           : "calibrate " + verb + " takes no file");
    if (verb == "show") return show(context, arguments);
    CalibrationRun run(context, arguments);
    if (verb == "build") return build(context, arguments, run);
    measure(context, arguments, run);
}

} // namespace

const Command& calibrateCommand() {
    static const Command command{
        "calibrate",
        "build [--source FILE] [--matrix sweet|coarse] | measure FOLDER | show",
        "Measure by how much Final Cut Pro's effects move a level, for true forecasts.",
        "orvanesync calibrate show",
        {{"--source", "FILE", "build: a recording to take the loudest minute of (default: made noise)"},
         {"--matrix", "NAME",
          "build: sweet (default), 49 combinations around the usual ones, or coarse, 27"}},
        calibrate};
    return command;
}

} // namespace orvane::cli
