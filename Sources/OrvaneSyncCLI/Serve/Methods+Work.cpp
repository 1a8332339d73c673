#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

/// A folder that is not named stays. Both are looked at before either is taken.
JSON setFolders(Desk& desk, const Call& call) {
    std::optional<FileURL> video, audio;
    if (const auto path = call.textIfPresent("videoFolder")) video = readableFolder(*path);
    if (const auto path = call.textIfPresent("audioFolder")) audio = readableFolder(*path);
    if (video) desk.controller->setVideoFolderURL(video);
    if (audio) desk.controller->setAudioFolderURL(audio);
    return {};
}

/// Done when the clips stand and the analysis has ended that the settings may ask for.
platform::Task startScan(Desk& desk, Call, std::shared_ptr<JSON>) {
    co_await desk.controller->startScan();
    co_await desk.controller->waitForAnalysisAfterScan();
}

} // namespace

std::vector<Method> workMethods() {
    return {
        Method("setFolders", {{"videoFolder", text, true}, {"audioFolder", text, true}}, setFolders),
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
