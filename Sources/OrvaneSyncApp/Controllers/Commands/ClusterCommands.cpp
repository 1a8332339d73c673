#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/PlayerJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"

#include <algorithm>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

ClusterEngineBag& bagOf(CommandContext& context) { return context.players().multicam()->bag(); }

/// Throws Error for a clip that is not in the cluster.
const std::shared_ptr<VideoEngine>& memberOf(CommandContext& context, const UUID& id) {
    const auto& engines = bagOf(context).engines();
    const auto found = engines.find(id);
    if (found == engines.end()) throw Error(Refusal::failed, "the clip is not in the cluster that is open");
    return found->second;
}

/// Waits for cameras that are still being loaded, such as those of a cluster that a clip has just left.
/// Answers when the resulting pictures are shown.
platform::Task run(CommandContext& context, Call call, void (*operation)(ClusterEngineBag&, const Call&)) {
    const platform::Task loaded = context.players().multicam()->loaded();
    co_await loaded;
    operation(bagOf(context), call);
    const platform::Task showing = bagOf(context).shown();
    co_await showing;
}

Command row(std::string_view id, std::string_view title, std::string_view help,
            std::vector<Parameter> parameters, void (*operation)(ClusterEngineBag&, const Call&)) {
    return Command::later(id, title, help, std::move(parameters),
                          [operation](CommandContext& context, Call call, const std::shared_ptr<JSON>&) {
                              return run(context, std::move(call), operation);
                          });
}

platform::Task load(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    std::vector<UUID> ids = call.ids("groupIDs");
    if (ids.empty()) throw Error(Refusal::invalidArguments, "groupIDs: names no clip");
    if (context.players().players() == nullptr)
        throw Error(Refusal::failed, "pictures and sound cannot be played; 'orvanesync doctor' says why");
    return context.players().loadCluster(std::move(ids));
}

} // namespace

std::vector<Command> clusterCommands() {
    constexpr double mostFrames = 1'000'000, longestSeconds = 604'800;
    return {
        Command::later("clusterLoad", "Open as Multicam",
                       "Opens all cameras of a take, or the clips that are chosen, each on its clap.",
                       {{"groupIDs", texts}}, load)
            .inMenu(Menu::view, 130, reviewKeys::multicam),
        row("clusterPlay", "Play All",
            "Starts all cameras at once, at the position of the one that is heard.", {},
            [](ClusterEngineBag& bag, const Call&) { bag.playAll(); }),
        row("clusterPause", "Pause All", "Stops all cameras.", {},
            [](ClusterEngineBag& bag, const Call&) { bag.pauseAll(); }),
        row("clusterToggle", "Play or Pause All", "Stops all cameras if one plays, else starts them.", {},
            [](ClusterEngineBag& bag, const Call&) { bag.togglePlay(); }),
        row("clusterPressJ", "Shuttle All Backwards", "Plays all cameras backwards, faster each time.", {},
            [](ClusterEngineBag& bag, const Call&) { bag.pressJ(); }),
        row("clusterPressL", "Shuttle All Forwards", "Plays all cameras forwards, faster each time.", {},
            [](ClusterEngineBag& bag, const Call&) { bag.pressL(); }),
        row("clusterStep", "Step All", "Steps all cameras by frames of their own.",
            {{.name = "count", .kind = integer, .lowest = -mostFrames, .highest = mostFrames},
             {"blip", boolean, true}},
            [](ClusterEngineBag& bag, const Call& call) {
                bag.stepAll(call.integer("count"), call.has("blip") && call.boolean("blip"));
            }),
        row("clusterSeek", "Go to in All", "Goes to a second of the sound that the cameras share.",
            {{.name = "seconds", .kind = number, .lowest = -longestSeconds, .highest = longestSeconds}},
            [](ClusterEngineBag& bag, const Call& call) { bag.seekAll(call.number("seconds")); }),
        Command("clusterAudioSource", "Hear Camera", "Chooses the camera that is heard.", {groupID},
                [](CommandContext& context, const Call& call) {
                    memberOf(context, call.id("groupID"));
                    bagOf(context).setAudioSource(call.id("groupID"));
                    return JSON();
                }),
        Command("clusterState", "Multicam State", "Returns the state of the player of each camera.", {},
                [](CommandContext& context, const Call&) { return clusterStateJSON(bagOf(context)); }),
        Command::later("clusterFrame", "Save Picture of Camera…",
                       "Writes the picture that a camera shows as PNG.",
                       {groupID, {"output", path}, {"overwrite", boolean, true}},
                       [](CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
                           const auto engine = memberOf(context, call.id("groupID"));
                           return writePicture(context, engine, std::move(call), std::move(answer));
                       }),
    };
}

} // namespace orvane::commands
