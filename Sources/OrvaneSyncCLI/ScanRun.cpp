#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"

#include "OrvaneSyncCLI/OperationProgress.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReportDoubt.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <functional>
#include <system_error>
#include <unistd.h>

namespace orvane::cli {

namespace {

FileURL folder(const std::string& path) {
    if (path.empty()) throw UsageError("a folder's name is empty");
    if (const std::string why = whyUnreadable(path, true); !why.empty())
        throw CommandError("can't read the folder '" + path + "': " + why);
    return {platform::files::standardized(path)};
}

void chooseFolders(ImportController& controller, const Arguments& arguments) {
    ScanScope scope{.exclusions = arguments.values("--exclude")};
    // A scan searches each folder for both kinds of files.
    for (const auto& paths :
         {arguments.values("--video"), arguments.values("--audio"), arguments.positionals()})
        for (const std::string& path : paths) scope.moreFolders.push_back(folder(path));
    if (scope.moreFolders.empty())
        throw UsageError("which folder? Name those that hold the clips and the recordings");
    if (std::ranges::find(scope.exclusions, std::string()) != scope.exclusions.end())
        throw UsageError("--exclude needs a pattern, such as '*_proxy*'");
    controller.scan().setScope(std::move(scope));
    for (const char* option : {"--sound-offset", "--sound-date", "--tc-rate", "--days"}) {
        const std::vector<std::string> given = arguments.values(option);
        if (std::ranges::adjacent_find(given, std::ranges::not_equal_to()) != given.end())
            throw UsageError(std::string(option) + " holds one value, and was given '" +
                             platform::text::joined(given, "' and '") + "'");
    }
    try {
        controller.scan().setCorrections(SourceCorrections::fromTexts(arguments.value("--sound-offset"),
                                                                      arguments.value("--sound-date"),
                                                                      arguments.value("--tc-rate")));
    } catch (const CorrectionError& error) {
        throw UsageError(error.what());
    }
}

/// Sets the setting for this run.
void chooseDays(Context& context, const Arguments& arguments) {
    const auto days = arguments.value("--days");
    if (!days) return;
    if (const auto problem = whyUseless(settings::matchingDays, *days))
        throw UsageError("--days: " + *problem);
    context.settings->overrideByName(settings::matchingDays.key, *days);
}

} // namespace

const std::vector<Option>& scanOptions() {
    static const std::vector<Option> options{
        {"--video", "DIR", "a folder of camera files; may be repeated"},
        {"--audio", "DIR", "a folder of recordings; may be repeated"},
        {"--exclude", "GLOB",
         "pass over files and folders of this name, or, with a slash, of this path below a FOLDER; may be "
         "repeated"},
        {"--sound-offset", "[-]HH:MM:SS:FF",
         "move the start of all recordings later; -01:00:00:00 is an hour earlier"},
        {"--sound-date", "YYYY-MM-DD",
         "the day on which the earliest recording of each shoot began; the others keep their distance"},
        {"--tc-rate", "R",
         "frames per second of all timecode, such as 23.976 or 29.97DF, whatever the files say"},
        {"--days", "DAYS",
         "which days are matched: same (its own day), midnight (also across midnight), neighbours (also the "
         "day before and after), auto (as midnight; other days for a wrong clock, with a doubt)"},
        {"--choose", "first",
         "take the first recording of each ambiguous clip, which would be left out; matched clips keep their "
         "sound and their doubts"},
        {"--report", "FILE", "a camera or sound report (ALE, CSV, TSV) to copy to the clips"},
        {"--no-cache", "", "read every file again; neither use nor keep earlier results"},
    };
    return options;
}

RunInputs inputsOf(const Arguments& arguments) {
    RunInputs inputs;
    for (const std::string& folder : arguments.positionals()) inputs.addFolder(folder);
    for (const char* option : {"--video", "--audio"})
        for (const std::string& folder : arguments.values(option)) inputs.addFolder(folder);
    for (const std::string& report : arguments.values("--report")) inputs.addFile(report, "the report");
    return inputs;
}

ScanRun::ScanRun(Context& context, const Arguments& arguments, Folders folders)
    : context_(context), loop_(platform::RunLoop::create()), progress_(context, arguments.has("--quiet")),
      warnings_(uselessStoredValues(*context.settings)) {
    ImportController::Dependencies dependencies;
    dependencies.mainThread = loop_;
    dependencies.settings = context.settings;
    dependencies.clock = context.clock;
    dependencies.stems = context.openStems();
    if (!arguments.has("--no-cache")) dependencies.probeCache = context.openProbeCache();
    controller_ = ImportController::create(std::move(dependencies));
    isQuiet_ = arguments.has("--quiet");
    if (folders == Folders::ofArguments) readOptions(arguments);
    subscription_ = controller_->onChange([this](ImportField field) {
        if (field == ImportField::scanState && controller_->scan().scanState() != ScanState::done)
            show(progressText(controller_->scan().scanState()));
        showProgress(progress_, *controller_, field);
    });
}

/// The options of `scanOptions`.
void ScanRun::readOptions(const Arguments& arguments) {
    chooseFolders(*controller_, arguments);
    chooseDays(context_, arguments);
    if (const auto chosen = arguments.value("--choose"); chosen && *chosen != "first")
        throw UsageError("--choose takes first, not '" + *chosen + "'");
    choosesFirst_ = arguments.has("--choose");
    if (const auto report = arguments.value("--report")) loadReport(*report);
}

void ScanRun::loadReport(const std::string& path) {
    if (const std::string why = whyNoReport(path); !why.empty())
        throw UsageError("can't read the report '" + path + "': " + why);
    wait(controller_->reports().loadALE({platform::files::standardized(path)}));
    if (const auto& error = controller_->reports().aleImportError())
        throw UsageError("can't read the report " + *error +
                         "; --report takes a camera or sound report (ALE, CSV, TSV)");
    if (const auto& report = controller_->reports().aleFile())
        for (std::string& doubt : reportDoubts(*report, *context_.settings)) warn(std::move(doubt));
}

void ScanRun::warn(std::string message) {
    context_.warn(message);
    warnings_.push_back(std::move(message));
}

void ScanRun::show(std::string_view phase) { progress_.show({std::string(phase), 0, 0}); }

void ScanRun::scan(Analysis analysis, const std::vector<ReviewLine>* review) {
    SmartAudioController& smartAudio = controller_->smartAudio();
    smartAudio.setAnalysesAfterScan(false); // it analyses the reviewed clips, and the review comes later
    try {
        wait(controller_->scan().startScan());
    } catch (const CorrectionError& error) { // the rate at which it counts depends on the files
        throw UsageError(error.what());
    }
    warnOfTheScan();
    if (review != nullptr) apply(*review);
    if (choosesFirst_) chooseFirst();
    if (analysis == Analysis::none) return;
    smartAudio.setAnalysesAfterScan(true);
    smartAudio.startAnalysisAfterScan();
    wait(smartAudio.waitForAnalysisAfterScan());
}

void ScanRun::chooseFirst() {
    const OpenWork& work = controller_->work();
    const SyncGroupList before = work.syncGroups();
    controller_->recordings().confirmAllAmbiguousMatches();
    const auto described = [&](const AudioMatch& match) {
        return "'" + work.fileNames().of(*match.audio) + "' " +
               platform::text::formatted("%.1f s", match.overlapDurationSeconds);
    };
    const SyncGroupChanges changes = work.syncGroups().changesSince(before);
    for (const std::size_t row : changes.changed) {
        const SyncGroup& group = work.syncGroups()[row];
        std::vector<std::string> others;
        for (const auto& recording : recordingsOf(group))
            if (recording.front() != 0) others.push_back(described(group.audioMatches[recording.front()]));
        warn("chosen first: '" + work.fileNames().of(group.video) + "' has " +
             described(group.audioMatches.front()) + ", and not " + platform::text::joined(others, ", "));
    }
}

void ScanRun::apply(const std::vector<ReviewLine>& review) {
    ReviewReading read = readDecisions(WorkSnapshot(*controller_), review);
    carryOut(*controller_, undoSteps::applyReview, read.decisions);
    for (std::string& problem : read.problems) warn(std::move(problem));
    if (!isQuiet_)
        context_.err << "The review changes " << counted(std::ssize(read.decisions), "clip", "clips")
                     << ".\n";
}

void ScanRun::open(const std::string& projectFile) {
    controller_->smartAudio().setAnalysesAfterScan(false); // the project holds the tracks
    wait(controller_->project().loadProject({platform::files::standardized(projectFile)}));
    for (const FileURL& folder : controller_->work().folders())
        if (const std::string why = whyUnreadable(folder.path, true); !why.empty())
            throw CommandError("can't read the project's folder '" + folder.path + "': " + why);
    if (!controller_->scan().canScan()) throw CommandError("the project names no folders");
    if (const auto& error = controller_->reports().aleImportError())
        warn("the project's report can't be read: " + *error);
    warnOfTheScan();
}

void ScanRun::warnOfTheScan() {
    for (std::string& warning : scanWarnings(WorkSnapshot(*controller_))) warn(std::move(warning));
}

void ScanRun::wait(const platform::Task& operation) { runUntilDone(*loop_, operation, progress_); }

} // namespace orvane::cli
