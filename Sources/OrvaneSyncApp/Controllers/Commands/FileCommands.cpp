#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/UnsavedWork.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"

#include <memory>
#include <optional>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

const Parameter overwrite{"overwrite", boolean, true};
/// The version of the document format; absent: the latest.
const Parameter version{
    .name = "version", .kind = text, .isOptional = true, .choices = fcpxml::fcpxmlVersionTexts};

platform::Task readReport(std::shared_ptr<ImportController> controller, FileURL file) {
    const platform::Task loading = controller->reports().loadALE(std::move(file));
    co_await loading;
    if (const auto& problem = controller->reports().aleImportError()) throw Error(Refusal::failed, *problem);
}

platform::Task loadALE(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    return lookUp(
        context.controller, [path = call.text("path")] { return readableReport(path); }, readReport);
}

ExportSettings exportSettings(CommandContext& context, const Call& call) {
    ExportController::Options options;
    options.eventName = call.textIfPresent("eventName");
    if (const auto& session = context.sessions->currentSessionId())
        options.metadataPrefix = context.sessions->places().metadataPrefix(*session).value_or("");
    ExportSettings settings = context.controller->exporting().exportSettings(options);
    if (call.has(version.name)) settings.fcpxmlVersion = *fcpxml::fcpxmlVersionFrom(call.text(version.name));
    return settings;
}

OutputPermission permission(const Call& call) {
    return {call.has(overwrite.name) && call.boolean(overwrite.name), "overwrite: true"};
}

/// Checks the output path before the document is made.
platform::Task exportedDocument(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const std::shared_ptr<const ImportController> controller = context.controller;
    const auto& mainThread = controller->work().environment.mainThread;
    platform::SerialQueue& queue = *controller->work().documents;
    const std::string& output = call.text("output");
    const auto guard = std::make_shared<std::optional<OutputGuard>>();
    auto checking = platform::onQueue(
        queue, mainThread,
        [guard, output, inputs = inputsOf(*controller), may = permission(call)](const std::stop_token& stop) {
            platform::throwIfStopped(stop);
            guard->emplace(OutputKind::document, inputs(), may);
            (*guard)->check(output);
        });
    co_await checking;
    const auto result = std::make_shared<ExportResult>();
    WorkSnapshot work(*controller);
    const auto clip = call.names(groupID.name) ? std::optional(call.id(groupID.name)) : std::nullopt;
    const platform::Task making =
        controller->exporting().exportInBackground(clip, exportSettings(context, call), result);
    co_await making;
    auto describing = platform::onQueue(
        queue, mainThread, [output, result, work = std::move(work)](const std::stop_token& stop) {
            addOwnWarnings(work, *result, Matching::canChange, stop);
            return exportJSON(work, *result, output);
        });
    JSON description = co_await describing;
    auto writing = platform::onQueue(
        queue, mainThread, [guard, output, result] { (*guard)->write(output, result->fcpxmlString); });
    co_await writing;
    *answer = std::move(description);
}

platform::Task saveProject(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    if (!hasClips(context))
        throw Error(Refusal::failed,
                    "there are no clips whose decisions a project would hold; scan folders first");
    return lookUp(
        context.controller,
        [path = call.text("path")] { return FileURL{platform::files::standardized(path)}; },
        [may = permission(call)](const std::shared_ptr<ImportController>& controller, FileURL file) {
            return controller->project().saveProject(std::move(file), may);
        });
}

platform::Task openProject(CommandContext& context, Call call, FileURL file) {
    co_await saveBeforeLeaving(context, call);
    const platform::Task loading = context.controller->project().loadProject(std::move(file));
    co_await loading;
}

platform::Task loadProject(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    return lookUp(
        context.controller, [path = call.text("path")] { return readableFile(path); },
        [&context, call](const std::shared_ptr<ImportController>&, FileURL file) {
            return openProject(context, call, std::move(file));
        });
}

/// A command for one clip whose operation opens its own undo step, and the same for all clips.
Command onGroup(std::string_view id, std::string_view help, const UndoStep& step,
                void (ReportController::*operation)(UUID), Command::Applies hasSome) {
    return Command(id, step.actionName, help, {groupID},
                   [operation](CommandContext& context, const Call& call) {
                       (context.controller->reports().*operation)(call.id("groupID"));
                       return JSON();
                   })
        .undoneBy(step)
        .forClips(hasSome);
}
Command onAll(std::string_view id, std::string_view help, const UndoStep& step,
              void (ReportController::*operation)(), int (ReportController::*clipCount)() const) {
    return Command(id, step.actionName, help, {},
                   [operation](CommandContext& context, const Call&) {
                       (context.controller->reports().*operation)();
                       return JSON();
                   })
        .undoneBy(step)
        .when([clipCount](const CommandContext& context) {
            return (context.controller->reports().*clipCount)() > 0;
        });
}

bool hasALEMetadata(const SyncGroup& group) { return group.hasALEMetadata(); }
bool hasLockitMetadata(const SyncGroup& group) { return group.hasLockitMetadata(); }

} // namespace

std::vector<Command> reportCommands() {
    namespace steps = undoSteps;
    return {
        Command::later("loadALE", "Load Report…",
                       "Reads a camera or sound report and copies its rows to the clips.", {{"path", path}},
                       loadALE)
            .alsoBy({"report"})
            .when(isScanIdle)
            .inMenu(Menu::file, 230),
        onGroup("clearALEMetadata", "Removes the report data of the clip.", steps::clearALEMetadata,
                &ReportController::clearALEMetadata, hasALEMetadata),
        onGroup("clearLockitMetadata", "Removes the metadata of LockitNetwork from the clip.",
                steps::clearLockitMetadata, &ReportController::clearLockitMetadata, hasLockitMetadata),
        onAll("clearALEMetadataForAllClips", "Removes the report data of all clips.",
              steps::clearALEMetadataForAllClips, &ReportController::clearALEMetadataForAllClips,
              &ReportController::aleMetadataClipCount)
            .inMenu(Menu::file, 240),
        onAll("clearLockitMetadataForAllClips", "Removes the metadata of LockitNetwork from all clips.",
              steps::clearLockitMetadataForAllClips, &ReportController::clearLockitMetadataForAllClips,
              &ReportController::lockitMetadataClipCount)
            .inMenu(Menu::file, 260),
    };
}

std::vector<Command> fileCommands() {
    return {
        Command::later("saveProject", ShortcutAction::saveProject, {{"path", path}, overwrite}, saveProject)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::file, 220),
        Command::later("loadProject", ShortcutAction::openProject, {{"path", path}, leaveUnsaved},
                       loadProject)
            .alsoBy({"project"})
            .inMenu(Menu::file, 210),
        Command::later("exportFCPXML", "Export FCPXML…", "Writes all matched clips as one document.",
                       {{"output", path}, {"eventName", text, true}, version, overwrite}, exportedDocument)
            .alsoBy({"sync", "session", "project"})
            .when(hasClipsWhileIdle)
            .inMenu(Menu::file, 410, "Ctrl+E"),
        Command::later("exportSingleClip", "Export Single Clip…", "Writes one clip as a document.",
                       {groupID, {"output", path}, {"eventName", text, true}, version, overwrite},
                       exportedDocument)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::clip, 310),
    };
}

} // namespace orvane::commands
