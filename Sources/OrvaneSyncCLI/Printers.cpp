#include "OrvaneSyncCLI/Printers.h"

namespace orvane::cli {

namespace {

JSON textsJSON(const std::vector<std::string>& texts) {
    JSON::Array array;
    for (const std::string& text : texts) array.emplace_back(text);
    return array;
}

std::vector<std::string> stateWarnings(const ImportController& controller) {
    std::vector<std::string> warnings = scanWarnings(controller);
    for (std::string& warning : smartAudioWarnings(controller)) warnings.push_back(std::move(warning));
    return warnings;
}

} // namespace

JSON countsJSON(const ImportController& controller) {
    JSON counts;
    counts.set("matched", controller.matchedCount());
    counts.set("unmatched", controller.unmatchedCount());
    counts.set("syncClips", controller.syncClipCount());
    counts.set("mos", controller.mosCount());
    counts.set("projectedMulticam", controller.projectedMulticamCount());
    return counts;
}

JSON stateJSON(const ImportController& controller, std::optional<SmartAudioMode> mode,
               const std::optional<std::vector<std::string>>& warnings) {
    JSON::Object names;
    for (const auto& [id, name] : controller.displayNames()) names.emplace_back(id.text(), name);
    JSON state;
    state.set("scanState", name(controller.scanState()));
    if (controller.discoveryResult()) state.set("discoveryResult", toJSON(*controller.discoveryResult()));
    if (controller.scanResult()) state.set("scanResult", toJSON(*controller.scanResult()));
    state.set("syncGroups", toJSONArray(controller.syncGroups()));
    state.set("wildTracks", toJSONArray(controller.wildTracks()));
    state.set("displayNames", std::move(names));
    state.set("counts", countsJSON(controller));
    state.setIfPresent("aleMatchStatus", controller.aleMatchStatus());
    state.setIfPresent("aleImportError", controller.aleImportError());
    state.set("smartAudio", smartAudioJSON(controller, mode));
    state.set("warnings", textsJSON(warnings ? *warnings : stateWarnings(controller)));
    return state;
}

JSON exportJSON(const ImportController& controller, const ExportResult& result, const std::string& output,
                std::optional<SmartAudioMode> mode) {
    JSON json;
    json.set("output", output);
    json.set("syncClipCount", result.syncClipCount);
    json.set("multicamCount", result.multicamCount);
    json.set("nativeRateCount", result.nativeRateCount);
    json.set("projectRateCount", result.projectRateCount);
    json.set("sourceMediaCount", result.sourceMediaCount);
    json.set("eventCount", result.eventCount);
    json.set("sceneEventCount", result.sceneEventCount);
    json.set("warnings", textsJSON(result.warnings));
    json.set("smartAudio", smartAudioJSON(controller, mode));
    json.set("counts", countsJSON(controller));
    json.setIfPresent("aleMatchStatus", controller.aleMatchStatus());
    return json;
}

} // namespace orvane::cli
