#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReportDoubt.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"
#include "Platform/Files.h"

#include <memory>
#include <optional>

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

const Parameter groupID{"groupID", id};
const Parameter overwrite{"overwrite", boolean, true};

platform::Task loadALE(Desk& desk, Call call, std::shared_ptr<JSON> /*result*/) {
    const FileURL file = readableFile(call.text("path"));
    if (const std::string why = whyNoReport(file.path); !why.empty())
        throw Error(ErrorCode::operationFailed, "can't read the report '" + file.path + "': " + why);
    const platform::Task loading = desk.controller->reports().loadALE(file);
    co_await loading;
    if (const auto& problem = desk.controller->reports().aleImportError())
        throw Error(ErrorCode::operationFailed, *problem);
}

ExportSettings exportSettings(Desk& desk, const Call& call) {
    ExportController::Options options;
    options.eventName = call.textIfPresent("eventName");
    if (const auto& session = desk.sessions->currentSessionId())
        options.metadataPrefix = desk.sessions->metadataPrefix(*session).value_or("");
    return desk.controller->exporting().exportSettings(options);
}

OutputPermission permission(const Call& call) {
    return {call.has(overwrite.name) && call.boolean(overwrite.name), "overwrite: true"};
}

/// Asks for the place before it asks for the document.
platform::Task exported(Desk& desk, Call call, std::shared_ptr<JSON> answer) {
    const std::shared_ptr<const ImportController> controller = desk.controller;
    const auto& mainThread = controller->work().environment.mainThread;
    platform::SerialQueue& queue = *controller->work().documents;
    const std::string output = call.text("output");
    const auto guard = std::make_shared<std::optional<OutputGuard>>();
    auto checking = platform::onQueue(
        queue, mainThread, [guard, output, inputs = controller->project().inputs(), may = permission(call)] {
            guard->emplace(OutputKind::document, inputs, may);
            (*guard)->check(output);
        });
    co_await checking;
    const auto result = std::make_shared<ExportResult>();
    const auto clip = call.has(groupID.name) ? std::optional(call.id(groupID.name)) : std::nullopt;
    const platform::Task making =
        controller->exporting().exportInBackground(clip, exportSettings(desk, call), result);
    co_await making;
    auto writing = platform::onQueue(
        queue, mainThread, [guard, output, result] { (*guard)->write(output, result->fcpxmlString); });
    co_await writing;
    addOwnWarnings(*controller, *result);
    *answer = exportJSON(*controller, *result, output);
}

/// An operation on one clip that opens its own undo step, and one on all clips.
Method onGroup(std::string_view name, void (ReportController::*operation)(UUID)) {
    return {name, {groupID}, [operation](Desk& desk, const Call& call) {
                (desk.controller->reports().*operation)(call.id("groupID"));
                return JSON();
            }};
}
Method onAll(std::string_view name, void (ReportController::*operation)()) {
    return {name, {}, [operation](Desk& desk, const Call&) {
                (desk.controller->reports().*operation)();
                return JSON();
            }};
}

} // namespace

std::vector<Method> reportMethods() {
    return {
        Method::later("loadALE", {{"path", path}}, loadALE),
        onGroup("clearALEMetadata", &ReportController::clearALEMetadata),
        onGroup("clearLockitMetadata", &ReportController::clearLockitMetadata),
        onAll("clearALEMetadataForAllClips", &ReportController::clearALEMetadataForAllClips),
        onAll("clearLockitMetadataForAllClips", &ReportController::clearLockitMetadataForAllClips),
    };
}

std::vector<Method> fileMethods() {
    return {
        Method("saveProject", {{"path", path}, overwrite},
               [](Desk& desk, const Call& call) {
                   desk.controller->project().saveProject({platform::files::standardized(call.text("path"))},
                                                          permission(call));
                   return JSON();
               }),
        Method::later("loadProject", {{"path", path}},
                      [](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                          return desk.controller->project().loadProject(readableFile(call.text("path")));
                      }),
        Method::later("exportFCPXML", {{"output", path}, {"eventName", text, true}, overwrite}, exported),
        Method::later("exportSingleClip", {groupID, {"output", path}, {"eventName", text, true}, overwrite},
                      exported),
    };
}

} // namespace orvane::cli::rpc
