#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/PlayerJSON.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"

#include <algorithm>
#include <iterator>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

constexpr double longestSeconds = 604'800; ///< of a clip: one week
constexpr double mostFrames = 1'000'000;

VideoEngine& engineOf(CommandContext& context) { return *context.review().engine(); }

void expectPlayers(CommandContext& context) {
    if (context.players().players() == nullptr)
        throw Error(Refusal::failed, "pictures and sound cannot be played; 'orvanesync doctor' says why");
}

/// A command that answers at once.
Command row(std::string_view id, std::string_view title, std::string_view help,
            std::vector<Parameter> parameters, void (*operation)(VideoEngine&, const Call&)) {
    return Command(id, title, help, std::move(parameters),
                   [operation](CommandContext& context, const Call& call) {
                       operation(engineOf(context), call);
                       return JSON();
                   })
        .alsoBy({"play"});
}

/// A command that answers when the resulting picture is shown.
Command shownRow(std::string_view id, std::string_view title, std::string_view help,
                 std::vector<Parameter> parameters, void (*operation)(VideoEngine&, const Call&)) {
    return Command::later(
               id, title, help, std::move(parameters),
               [operation](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                   operation(engineOf(context), call);
                   return engineOf(context).shown();
               })
        .alsoBy({"play"});
}

platform::Task pressKey(CommandContext& context, Call call, std::shared_ptr<JSON> /*answer*/) {
    ReviewPlayers& players = context.players();
    const auto event = keyEventNamed(call.text("key"), modifiersOf(call), call.boolean("isDown"),
                                     call.has("isRepeat") && call.boolean("isRepeat"));
    if (!event)
        throw Error(Refusal::invalidArguments, "key: there is no key '" + call.text("key") +
                                                   "'; one is a letter, 0 , . [ ] plus minus space return "
                                                   "escape arrowUp arrowDown arrowLeft arrowRight");
    // Another program may have changed the key's action.
    const platform::Task bound = players.shortcuts()->refreshed();
    co_await bound;
    const platform::Task loaded = players.multicam()->loaded();
    co_await loaded;
    players.keyboard().handle(*event);
    const platform::Task waveform = context.review().jumpReady();
    try {
        co_await waveform;
    } catch (...) {
        // Without the waveform, a jump that needs it does not move.
    }
    const platform::Task showing = players.shown();
    co_await showing;
}

platform::Task advanceClock(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    auto* const pulled = dynamic_cast<platform::PulledPlayerSystem*>(context.players().players().get());
    if (pulled == nullptr)
        throw Error(Refusal::failed,
                    "the player runs on the clock of the machine; "
                    "'orvanesync serve --virtual-clock' has a clock that advanceClock moves");
    const auto moved = std::make_shared<platform::Completion>(context.mainThread());
    pulled->advance(call.number("seconds"), [moved] { moved->end(); });
    return moved->task();
}

bool canPlay(const SyncGroup& /*group*/) { return true; }

std::vector<Command> loadingCommands() {
    return {
        Command::later("playerLoad", "Open in the Review",
                       "Opens the clip in the player, on its clap; searches for one where it has none.",
                       {groupID},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           expectPlayers(context);
                           engineOf(context).output().measureLevels();
                           return context.players().loadGroup(call.id("groupID"));
                       })
            .alsoBy({"play"})
            .forClips(canPlay),
        Command("playerState", "Player State", "Returns the state of the player.", {},
                [](CommandContext& context, const Call&) { return playerStateJSON(engineOf(context)); })
            .alsoBy({"play"}),
        Command::later("playerFrame", "Save Picture…", "Writes the picture that is shown as PNG.",
                       {{"output", path}, {"overwrite", boolean, true}},
                       [](CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
                           return writePicture(context, context.review().engine(), std::move(call),
                                               std::move(answer));
                       })
            .alsoBy({"frame", "play"}),
        Command::later("advanceClock", "Advance Clock",
                       "Moves the players' clock; answers when everything due by then is done.",
                       {{.name = "seconds", .kind = number, .lowest = 0, .highest = 3600}}, advanceClock)
            .alsoBy({"play"}),
    };
}

std::vector<Command> transportCommands() {
    return {
        row("playerPlay", "Play", "Plays at normal speed.", {},
            [](VideoEngine& engine, const Call&) { engine.play(); }),
        shownRow("playerPause", "Pause", "Pauses playback.", {},
                 [](VideoEngine& engine, const Call&) { engine.pause(true); }),
        shownRow("playerSeek", "Go to", "Goes to a second of the clip; answers when its picture is shown.",
                 {{.name = "seconds", .kind = number, .lowest = -longestSeconds, .highest = longestSeconds}},
                 [](VideoEngine& engine, const Call& call) {
                     engine.noteUserMoved();
                     engine.seek(call.number("seconds"));
                 }),
        shownRow("playerStep", "Step", "Steps by frames, backwards where negative.",
                 {{.name = "count", .kind = integer, .lowest = -mostFrames, .highest = mostFrames},
                  {"blip", boolean, true}},
                 [](VideoEngine& engine, const Call& call) {
                     engine.stepFrames(call.integer("count"), call.has("blip") && call.boolean("blip"));
                 }),
        shownRow("playerPressJ", "Shuttle Backwards", "Plays backwards, faster each time.", {},
                 [](VideoEngine& engine, const Call&) { engine.pressJ(); }),
        shownRow("playerPressL", "Shuttle Forwards", "Plays forwards, faster each time.", {},
                 [](VideoEngine& engine, const Call&) { engine.pressL(); }),
        shownRow(
            "playerSlowMotion", "Slow Motion", "Plays at a quarter of the speed.", {{"forward", boolean}},
            [](VideoEngine& engine, const Call& call) { engine.slowMotionScrub(call.boolean("forward")); }),
        shownRow(
            "playerLoop", "Loop", "Plays so many frames either side of a second again and again.",
            {{.name = "aroundSeconds", .kind = number, .lowest = -longestSeconds, .highest = longestSeconds},
             {.name = "frames", .kind = integer, .lowest = 1, .highest = mostFrames}},
            [](VideoEngine& engine, const Call& call) {
                engine.setLoopRegion(call.number("aroundSeconds"), call.integer("frames"));
            }),
        row("playerClearLoop", "Clear Loop", "Plays on beyond the end of the loop.", {},
            [](VideoEngine& engine, const Call&) { engine.clearLoop(); }),
        Command::later("playerClapCheck", "Clap Check Loop", "Loops around the clap, or ends the loop.", {},
                       [](CommandContext& context, const Call&, const std::shared_ptr<JSON>&) {
                           context.review().clapCheck();
                           return context.review().engine()->shown();
                       })
            .alsoBy({"play"}),
        row("playerVolume", "Volume", "Sets how loud the clip is heard, from 0 to 1.",
            {{.name = "volume", .kind = number, .lowest = 0, .highest = 1}},
            [](VideoEngine& engine, const Call& call) {
                engine.setVolume(static_cast<float>(call.number("volume")));
            }),
    };
}

std::vector<Command> handCommands() {
    return {
        Command::later(
            "playerKey", "Press a Key", "Sends a key to the screen in front.",
            {{"key", text}, {"modifiers", texts, true}, {"isDown", boolean}, {"isRepeat", boolean, true}},
            pressKey)
            .alsoBy({"play"}),
        Command::later("playerSkim", "Skim",
                       "Shows where the pointer is; without a second, where the playhead was.",
                       {{.name = "seconds",
                         .kind = number,
                         .isOptional = true,
                         .lowest = -longestSeconds,
                         .highest = longestSeconds}},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           context.review().handleSkim(call.numberIfPresent("seconds"));
                           return engineOf(context).shown();
                       })
            .alsoBy({"play"}),
    };
}

} // namespace

std::vector<Command> playerCommands() {
    std::vector<Command> commands;
    for (auto* part : {&loadingCommands, &transportCommands, &handCommands})
        std::ranges::move((*part)(), std::back_inserter(commands));
    return commands;
}

} // namespace orvane::commands
