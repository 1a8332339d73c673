#include "OrvaneSyncCLI/DocumentOutput.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ReportDoubt.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"
#include "Platform/Files.h"

#include <functional>

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

const Parameter groupID{"groupID", id};
const Parameter overwrite{"overwrite", boolean, true};

JSON loadALE(Desk& desk, const Call& call) {
    const FileURL file = readableFile(call.text("path"));
    if (const std::string why = whyNoReport(file.path); !why.empty())
        throw Error(ErrorCode::operationFailed, "can't read the report '" + file.path + "': " + why);
    desk.controller->reports().loadALE(file);
    if (const auto& problem = desk.controller->reports().aleImportError())
        throw Error(ErrorCode::operationFailed, *problem);
    return {};
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
JSON written(const ImportController& controller, const Call& call,
             const std::function<ExportResult()>& exported) {
    const std::string& output = call.text("output");
    const OutputGuard guard(OutputKind::document, controller.project().inputs(), permission(call));
    guard.check(output);
    ExportResult result = exported();
    guard.write(output, result.fcpxmlString);
    addOwnWarnings(controller, result);
    return exportJSON(controller, result, output);
}

JSON exportFCPXML(Desk& desk, const Call& call) {
    const ImportController& controller = *desk.controller;
    return written(controller, call,
                   [&] { return controller.exporting().exportFCPXML(exportSettings(desk, call)); });
}

JSON exportSingleClip(Desk& desk, const Call& call) {
    const ImportController& controller = *desk.controller;
    return written(controller, call, [&] {
        return controller.exporting().exportSingleClip(call.id("groupID"), exportSettings(desk, call));
    });
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
        Method("loadALE", {{"path", path}}, loadALE),
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
        Method("exportFCPXML", {{"output", path}, {"eventName", text, true}, overwrite}, exportFCPXML),
        Method("exportSingleClip", {groupID, {"output", path}, {"eventName", text, true}, overwrite},
               exportSingleClip),
    };
}

} // namespace orvane::cli::rpc
