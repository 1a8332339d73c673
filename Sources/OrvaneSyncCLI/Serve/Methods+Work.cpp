#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

std::optional<FileURL> folder(const Call& call, std::string_view name) {
    return call.has(name) ? std::optional(readableFolder(call.text(name))) : std::nullopt;
}

/// A folder that is not named stays, a null takes it away. Both are looked at before either is taken.
JSON setFolders(Desk& desk, const Call& call) {
    const auto video = folder(call, "videoFolder"), audio = folder(call, "audioFolder");
    if (call.mentions("videoFolder")) desk.controller->scan().setVideoFolderURL(video);
    if (call.mentions("audioFolder")) desk.controller->scan().setAudioFolderURL(audio);
    return {};
}

/// Done when the clips stand and the analysis has ended that the settings may ask for.
platform::Task startScan(Desk& desk, Call, std::shared_ptr<JSON>) {
    co_await desk.controller->scan().startScan();
    co_await desk.controller->smartAudio().waitForAnalysisAfterScan();
}

} // namespace

std::vector<Method> workMethods() {
    return {
        Method("setFolders", {{"videoFolder", path, true}, {"audioFolder", path, true}}, setFolders),
        Method::later("startScan", {}, startScan),
        Method("reset", {},
               [](Desk& desk, const Call&) {
                   desk.controller->reset();
                   return JSON();
               }),
        Method("state", {}, [](Desk& desk, const Call&) { return stateJSON(*desk.controller); }),
        Method("group", {{"groupID", id}},
               [](Desk& desk, const Call& call) { return toJSON(desk.group(call.id("groupID"))); }),
    };
}

} // namespace orvane::cli::rpc
