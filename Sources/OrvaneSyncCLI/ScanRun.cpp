#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"

#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReportDoubt.h"
#include "Platform/Files.h"

#include <cerrno>
#include <exception>
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
    const auto& folders = arguments.positionals();
    if (folders.size() > 2) throw UsageError("more than two folders: " + folders[2]);
    auto video = arguments.value("--video"), audio = arguments.value("--audio");
    if (!folders.empty()) {
        if (video || audio)
            throw UsageError("give the folders by name (--video, --audio) or by place, not both");
        // One folder stands for both kinds.
        video = folders.front();
        audio = folders.back();
    }
    if (!video && !audio) throw UsageError("which folder?");
    if (video) controller.scan().setVideoFolderURL(folder(*video));
    if (audio) controller.scan().setAudioFolderURL(folder(*audio));
}

} // namespace

const std::vector<Option>& scanOptions() {
    static const std::vector<Option> options{
        {"--video", "DIR", "the folder of the camera files alone"},
        {"--audio", "DIR", "the folder of the recordings alone"},
        {"--report", "FILE", "a camera or sound report (ALE, CSV, TSV) to lay over the clips"},
        {"--no-cache", "", "read every file anew; neither use nor keep earlier results"},
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
    : context_(context), loop_(platform::RunLoop::create()), progress_(context, arguments.has("--quiet")) {
    ImportController::Dependencies dependencies;
    dependencies.mainThread = loop_;
    dependencies.settings = context.settings;
    dependencies.clock = context.clock;
    if (!arguments.has("--no-cache")) dependencies.probeCache = context.openProbeCache();
    controller_ = ImportController::create(std::move(dependencies));
    if (folders == Folders::ofArguments) chooseFolders(*controller_, arguments);
    if (const auto report = arguments.value("--report")) loadReport(*report);
    subscription_ = controller_->onChange([this](ImportField field) {
        if (field == ImportField::scanState && controller_->scan().scanState() != ScanState::done)
            show(progressText(controller_->scan().scanState()));
        if (field == ImportField::progress && controller_->scan().progress().isActive())
            progress_.show(controller_->scan().progress());
        const SmartAudioProgress& heard = controller_->smartAudio().state().progress;
        if (field == ImportField::smartAudio && heard.total > 0)
            progress_.show({heard.phase, heard.current, heard.total}, heard.fraction);
    });
}

/// A report that cannot be read is a warning: the clips are worth having without it.
void ScanRun::loadReport(const std::string& path) {
    if (const std::string why = whyNoReport(path); !why.empty())
        return warn("can't read the report '" + path + "': " + why);
    wait(controller_->reports().loadALE({platform::files::standardized(path)}));
    if (const auto& error = controller_->reports().aleImportError())
        warn(*error);
    else if (const auto& report = controller_->reports().aleFile())
        for (std::string& doubt : reportDoubts(*report, *context_.settings)) warn(std::move(doubt));
}

void ScanRun::warn(std::string message) {
    context_.warn(message);
    warnings_.push_back(std::move(message));
}

void ScanRun::show(std::string_view phase) { progress_.show({std::string(phase), 0, 0}); }

void ScanRun::scan() {
    wait(controller_->scan().startScan());
    wait(controller_->smartAudio().waitForAnalysisAfterScan());
    warnOfTheScan();
}

void ScanRun::open(const std::string& projectFile) {
    controller_->smartAudio().setAnalysesAfterScan(false); // the tracks are those that the project holds
    wait(controller_->project().loadProject({platform::files::standardized(projectFile)}));
    for (const auto& folder : {controller_->work().videoFolderURL(), controller_->work().audioFolderURL()})
        if (folder)
            if (const std::string why = whyUnreadable(folder->path, true); !why.empty())
                throw CommandError("can't read the project's folder '" + folder->path + "': " + why);
    if (!controller_->scan().canScan()) throw CommandError("the project names no folders");
    if (const auto& error = controller_->reports().aleImportError())
        warn("the project's report can't be read: " + *error);
    warnOfTheScan();
}

void ScanRun::warnOfTheScan() {
    for (std::string& warning : scanWarnings(*controller_)) warn(std::move(warning));
}

void ScanRun::wait(const platform::Task& operation) {
    std::exception_ptr raised;
    operation.whenDone([&](std::exception_ptr how) {
        raised = std::move(how);
        loop_->quit();
    });
    loop_->run();
    progress_.clear();
    if (raised) std::rethrow_exception(raised);
}

} // namespace orvane::cli
