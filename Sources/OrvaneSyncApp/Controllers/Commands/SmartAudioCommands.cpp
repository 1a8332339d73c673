#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"

#include <algorithm>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

const Parameter overwriteManualTracks{"forceOverwriteManualTracks", boolean};

int trackOf(const SyncGroup& group, const Call& call) {
    int channels = 0;
    for (const AudioMatch& match : group.audioMatches) channels += match.audio->channelCount.value_or(1);
    const int track = call.integer("trackIndex");
    if (track >= 1 && track <= std::max(channels, 1)) return track;
    throw Error(Refusal::invalidArguments,
                "trackIndex: the clip has tracks 1 to " + std::to_string(std::max(channels, 1)));
}

Command onTrack(std::string_view id, std::string_view title, std::string_view help, const UndoStep& step,
                platform::Task (TrackEditing::*operation)(const UUID&, int)) {
    return Command::later(
               id, title, help, {groupID, {.name = "trackIndex", .kind = integer, .lowest = 1}},
               [step, operation](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                   const UUID group = call.id("groupID");
                   const int track = trackOf(context.group(group), call);
                   return context.withUndo(
                       step, [&] { return (context.controller->tracks().*operation)(group, track); });
               })
        .undoneBy(step)
        .forClips(hasSound);
}

platform::Task runAnalysis(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    return context.controller->smartAudio().runSmartAudioAnalysis(*smartAudioModeFromUITag(call.text("mode")),
                                                                  call.boolean("forceOverwriteManualTracks"));
}

/// Null for a clip that was not analysed.
JSON smartAudioResult(CommandContext& context, const Call& call) {
    const auto& results = context.controller->smartAudio().state().results;
    const auto found = results.find(context.group(call.id("groupID")).id);
    return found == results.end() ? JSON() : toJSON(*found->second);
}

} // namespace

std::vector<Command> smartAudioCommands() {
    namespace steps = undoSteps;
    return {
        Command::later("runSmartAudioAnalysis", "Run Smart Audio Analysis",
                       "Analyzes the sound of all matched clips.",
                       {{.name = "mode", .kind = text, .choices = smartAudioModeTags}, overwriteManualTracks},
                       runAnalysis)
            .alsoBy({"sync"})
            .endedByOtherWork()
            .when(hasSoundWhileIdle)
            .inMenu(Menu::audio, 110),
        Command::later("runSmartAudioForGroup", "Run Smart Audio for This Clip",
                       "Analyzes the sound of the clip and measures its loudness.",
                       {groupID, overwriteManualTracks},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           return context.controller->smartAudio().runSmartAudioForGroup(
                               call.id("groupID"), call.boolean("forceOverwriteManualTracks"));
                       })
            .alsoBy({"analyze"})
            .endedByOtherWork()
            .forClips(hasSound),
        Command::later(
            "measureLoudness", "Measure Loudness",
            "Measures the loudness of all matched clips and sets the master gain of those that have "
            "none set by hand.",
            {},
            [](CommandContext& context, const Call&, const std::shared_ptr<JSON>&) {
                return context.controller->smartAudio().measureLoudness();
            })
            .alsoBy({"sync", "loudness"})
            .endedByOtherWork()
            .when(hasSoundWhileIdle)
            .inMenu(Menu::audio, 130),
        Command("stopSmartAudio", "Stop Smart Audio", "Ends the analysis; what it has done until now stays.",
                {},
                [](CommandContext& context, const Call&) {
                    context.controller->smartAudio().stop();
                    return JSON();
                })
            .when([](const CommandContext& context) {
                return context.controller->smartAudio().state().isAnalyzing;
            })
            .servedAtOnce(),
        Command("smartAudioResult", "Smart Audio Result", "Gives what Smart Audio found in the clip.",
                {groupID}, smartAudioResult)
            .alsoBy({"analyze"})
            .forClips(hasSound),
        onTrack("toggleTrackActive", "Toggle Audio Track", "Switches a track of the export on or off.",
                steps::toggleTrackActive, &TrackEditing::toggleTrackActive),
        onTrack("soloTrackActive", "Solo Audio Track", "Switches all other tracks of the export off.",
                steps::soloTrackActive, &TrackEditing::soloTrackActive),
        onTrack("toggleAlgorithmInclusion", "Toggle Algo Inclusion",
                "Lets the analysis use a track, or keeps it out.", steps::toggleAlgorithmInclusion,
                &TrackEditing::toggleAlgorithmInclusion),
        onTrack("soloAlgorithmInclusion", "Solo Algo Inclusion", "Lets the analysis use only this track.",
                steps::soloAlgorithmInclusion, &TrackEditing::soloAlgorithmInclusion),
    };
}

} // namespace orvane::commands
