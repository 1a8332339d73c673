#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"

#include <algorithm>

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;

const Parameter groupID{"groupID", id};
const Parameter overwrite{"forceOverwriteManualTracks", boolean};

int trackOf(const SyncGroup& group, const Call& call) {
    int channels = 0;
    for (const AudioMatch& match : group.audioMatches) channels += match.audio->channelCount.value_or(1);
    const int track = call.integer("trackIndex");
    if (track >= 1 && track <= std::max(channels, 1)) return track;
    throw Error(ErrorCode::invalidParams,
                "trackIndex: the clip has tracks 1 to " + std::to_string(std::max(channels, 1)));
}

Method onTrack(std::string_view name, const UndoStep& step,
               platform::Task (TrackEditing::*operation)(const UUID&, int)) {
    return Method::later(name, {groupID, {"trackIndex", integer}},
                         [step, operation](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                             const UUID group = call.id("groupID");
                             const int track = trackOf(desk.group(group), call);
                             return desk.withUndo(
                                 step, [&] { return (desk.controller->tracks().*operation)(group, track); });
                         });
}

platform::Task runAnalysis(Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
    const auto mode = smartAudioModeFromUITag(call.text("mode"));
    if (!mode)
        throw Error(ErrorCode::invalidParams,
                    "runSmartAudioAnalysis: mode is off, standard, studio, cinematic or custom");
    return desk.controller->smartAudio().runSmartAudioAnalysis(*mode,
                                                               call.boolean("forceOverwriteManualTracks"));
}

/// Null for a clip that was not analysed.
JSON smartAudioResult(Desk& desk, const Call& call) {
    const auto& results = desk.controller->smartAudio().state().results;
    const auto found = results.find(desk.group(call.id("groupID")).id);
    return found == results.end() ? JSON() : toJSON(found->second);
}

} // namespace

std::vector<Method> audioMethods() {
    namespace steps = undoSteps;
    return {
        Method::later("runSmartAudioAnalysis", {{"mode", text}, overwrite}, runAnalysis),
        Method::later("runSmartAudioForGroup", {groupID, overwrite},
                      [](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                          return desk.controller->smartAudio().runSmartAudioForGroup(
                              call.id("groupID"), call.boolean("forceOverwriteManualTracks"));
                      }),
        Method("smartAudioResult", {groupID}, smartAudioResult),
        onTrack("toggleTrackActive", steps::toggleTrackActive, &TrackEditing::toggleTrackActive),
        onTrack("soloTrackActive", steps::soloTrackActive, &TrackEditing::soloTrackActive),
        onTrack("toggleAlgorithmInclusion", steps::toggleAlgorithmInclusion,
                &TrackEditing::toggleAlgorithmInclusion),
        onTrack("soloAlgorithmInclusion", steps::soloAlgorithmInclusion,
                &TrackEditing::soloAlgorithmInclusion),
    };
}

} // namespace orvane::cli::rpc
