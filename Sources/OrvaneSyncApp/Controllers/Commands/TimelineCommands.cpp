#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CardOffsets.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/SidebarOutline.h"
#include "OrvaneSyncCore/Services/Review/AlternateAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Platform/OnQueue.h"

#include <algorithm>
#include <iterator>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

/// For a movement on the screen.
constexpr double mostPoints = 1e9;

JSON timelineJSON(CommandContext& context, const Call& call) {
    TimelineController& timeline = context.controller->timeline();
    const UUID groupID = call.id("groupID");
    const auto& inReview = context.review().groupID();
    if (!inReview || inReview == groupID) timeline.show(groupID);
    TimelineZoomState zoom = timeline.zoomOf(groupID);
    if (const auto width = call.numberIfPresent("viewportWidth"))
        for (TimelineZoomState* one : {&zoom, &timeline.zoom()}) one->updateViewportWidth(*width);
    JSON json;
    json.set("zoomScale", zoom.zoomScale);
    json.set("scrollOffset", zoom.scrollOffset);
    json.set("viewportWidth", zoom.viewportWidth);
    json.set("clipDuration", zoom.clipDuration);
    json.set("preRollSeconds", zoom.preRollSeconds);
    json.set("postRollSeconds", zoom.postRollSeconds);
    json.set("fitPixelsPerSecond", zoom.fitPixelsPerSecond());
    json.set("pixelsPerSecond", zoom.pixelsPerSecond());
    json.set("rulerInterval", zoom.rulerInterval());
    return json;
}

platform::Task waveform(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const int bins =
        call.has("bins") ? call.integer("bins") : static_cast<int>(WaveformReduction::reviewBins);
    const auto result = std::make_shared<WaveformResult>();
    const platform::Task reducing = context.controller->timeline().reduceWaveform(
        call.id("groupID"), static_cast<std::size_t>(bins), result);
    co_await reducing;
    *answer = toJSON(*result, onsetMarkersOf(*result));
}

platform::Task dragAudio(CommandContext& context, Call call, std::shared_ptr<JSON> /*answer*/) {
    const ModifierSet held = modifiersOf(call);
    const auto engine = context.review().engine();
    const platform::Task dragging = context.review().dragAudio(
        call.id("groupID"), call.number("points"),
        {.command = held.contains(ModifierSet::command), .shift = held.contains(ModifierSet::shift)});
    try {
        co_await dragging;
    } catch (const OutOfRange& refused) {
        throw Error(Refusal::invalidArguments, std::string("dragAudio: ") + refused.what());
    }
    co_await engine->shown();
}

JSON lanesJSON(CommandContext& context, const Call& call) {
    JSON::Array lanes;
    for (const int lane : alternateAudioLanes(context.group(call.id("groupID")))) lanes.emplace_back(lane);
    return lanes;
}

JSON suggestionJSON(CommandContext& context, const Call& call) {
    const SyncGroup& group = context.group(call.id("groupID"));
    const auto suggestion = context.controller->timeline().siblingSuggestion(group.id);
    if (!suggestion) return {};
    JSON json;
    json.set("groupID", suggestion->sibling->id.text());
    json.set("offset", suggestion->offsetSeconds);
    json.set("text", suggestion->text(context.controller->timeline().timelineFrameRate(group)));
    json.set("key", suggestion->dismissKey);
    return json;
}

/// Finds the suggestion for the clip and then calls `use` with it, if there is one and the clip still exists.
template <class Use>
platform::Task withCardSuggestion(const CommandContext& context, const UUID& groupID, Use use) {
    return lookUp(
        context.controller,
        [question = CardQuestion::of(*context.controller, groupID)] {
            return question ? question->answer() : std::nullopt;
        },
        [groupID, use = std::move(use)](const std::shared_ptr<ImportController>& controller,
                                        const std::optional<CardSuggestion>& suggestion) {
            const SyncGroup* group = controller->work().syncGroups().find(groupID);
            if (suggestion && group != nullptr) use(*controller, *group, *suggestion);
            return platform::Task::ended();
        });
}

platform::Task cardSuggestionJSON(CommandContext& context, const Call& call,
                                  const std::shared_ptr<JSON>& result) {
    return withCardSuggestion(
        context, call.id("groupID"),
        [result](ImportController& controller, const SyncGroup& group, const CardSuggestion& suggestion) {
            result->set("groupID", suggestion.moved->id.text());
            result->set("offset", suggestion.offsetSeconds);
            result->set("text", suggestion.text(controller.timeline().timelineFrameRate(group),
                                                controller.work().fileNames()));
            JSON::Array clips;
            for (const CardSuggestion::Clip& clip : suggestion.clips) clips.emplace_back(clip.groupID.text());
            result->set("clips", std::move(clips));
        });
}

platform::Task useCardSuggestion(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    const bool isForAllClips = call.has("isForAllClips") && call.boolean("isForAllClips");
    return withCardSuggestion(
        context, call.id("groupID"),
        [isForAllClips](ImportController& controller, const SyncGroup&, const CardSuggestion& suggestion) {
            checked("applyCardSuggestion",
                    [&] { applyCardSuggestion(controller, suggestion, isForAllClips); });
        });
}

JSON outlineJSON(const std::vector<SidebarNode>& nodes) {
    JSON::Array rows;
    for (const SidebarNode& node : nodes) {
        JSON row;
        row.set("id", node.id);
        row.set("label", node.label);
        row.set("isMulticam", node.isMulticam);
        if (node.group) row.set("groupID", node.group->id.text());
        if (!node.children.empty()) row.set("children", outlineJSON(node.children));
        rows.push_back(std::move(row));
    }
    return rows;
}

platform::Task outline(CommandContext& context, Call, std::shared_ptr<JSON> answer) {
    const OpenWork& work = context.controller->work();
    auto making = platform::onQueue(
        *work.documents, work.environment.mainThread,
        [clips = work.syncGroups(), rules = NamingRules::of(*context.settings)](const std::stop_token&) {
            return outlineJSON(SidebarOutline::build(clips, rules.source, rules.pattern));
        });
    *answer = co_await making;
}

bool lacksAnchor(const SyncGroup& group) {
    return hasUnlockedSound(group) && !group.audioAnchorOffsetInAudioSeconds;
}

/// The commands that change what the timeline shows of a clip.
std::vector<Command> viewCommands() {
    return {
        Command(
            "timeline", "Show in the Timeline",
            "Gives the scale of the timeline for the clip, which it shows unless another is open in the "
            "review.",
            {groupID,
             {.name = "viewportWidth", .kind = number, .isOptional = true, .lowest = 1, .highest = 100'000}},
            timelineJSON),
        Command::later("waveform", "Waveform", "Gives the sound of the clip as peaks, levels and onsets.",
                       {groupID,
                        {.name = "bins",
                         .kind = integer,
                         .isOptional = true,
                         .lowest = 1,
                         .highest = static_cast<double>(WaveformReduction::mostBins)}},
                       waveform)
            .alsoBy({"onsets", "waveform"})
            .forClips(hasSound),
        Command::later("scrollFrames", "Scroll over the Picture",
                       "Scrolls over the picture and gives the number of frames stepped; answers when the "
                       "picture is shown.",
                       {{.name = "deltaY", .kind = number, .lowest = -mostPoints, .highest = mostPoints},
                        {"isPrecise", boolean}},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>& frames) {
                           *frames = context.players().scrollFrames(call.number("deltaY"),
                                                                    call.boolean("isPrecise"));
                           return context.players().shown();
                       }),
        Command("lanes", "Lanes", "Gives the row of each recording of the clip but the first.", {groupID},
                lanesJSON)
            .forClips(hasSound),
        Command::later("outline", "Clip List",
                       "Gives the clips as the side bar lists them, cameras of a take together.", {},
                       outline),
    };
}

std::vector<Command> moveCommands() {
    namespace steps = undoSteps;
    return {
        Command::later("setAnchor", "Set Sync Anchor",
                       "Puts the clip's anchor at a second of its first recording, within the take; answers "
                       "when the picture there is shown.",
                       {groupID,
                        {.name = "secondsInAudio",
                         .kind = number,
                         .lowest = -ClipEditing::furthestOffsetSeconds,
                         .highest = ClipEditing::furthestOffsetSeconds}},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           context.review().setAnchor(call.id("groupID"), call.number("secondsInAudio"));
                           return context.review().engine()->shown();
                       })
            .undoneBy(steps::setAudioAnchor)
            .forClips(hasUnlockedSound),
        Command::later(
            "autoDetectAudioAnchor", "Detect Clap",
            "Searches the first recording for a clap and puts the anchor there if there is none.", {groupID},
            [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                return context.controller->timeline().autoDetectAudioAnchorIfMissing(call.id("groupID"));
            })
            .alsoBy({"clap"})
            .forClips(lacksAnchor)
            .inMenu(Menu::clip, 250, "Ctrl+D"),
        Command::later(
            "nudgeByFrames", "Nudge Audio",
            "Moves the sound of the clip by frames of its video; answers when the picture that this leads to "
            "is shown.",
            {groupID, {.name = "frames", .kind = integer, .lowest = -10'000'000, .highest = 10'000'000}},
            [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                checked("nudgeByFrames",
                        [&] { context.review().nudgeByFrames(call.id("groupID"), call.integer("frames")); });
                return context.review().engine()->shown();
            })
            .undoneBy(steps::adjustAudioOffset)
            .forClips(hasSound),
        Command::later("dragAudio", "Drag Audio", "Drags the sound of the clip by points of the timeline.",
                       {groupID,
                        {.name = "points", .kind = number, .lowest = -mostPoints, .highest = mostPoints},
                        {"modifiers", texts, true}},
                       dragAudio)
            .undoneBy(steps::adjustAudioOffset)
            .forClips(isUnlocked),
    };
}

std::vector<Command> suggestionCommands() {
    return {
        Command("siblingSuggestion", "Sibling Suggestion",
                "Gives what another camera of the take was moved by, where this one was not.", {groupID},
                suggestionJSON),
        Command("applySiblingSuggestion", "Apply",
                "Moves the sound of the clip as that of the suggested camera.", {groupID},
                [](CommandContext& context, const Call& call) {
                    checked("applySiblingSuggestion", [&] {
                        context.controller->timeline().applySiblingSuggestion(call.id("groupID"));
                    });
                    return JSON();
                })
            .undoneBy(undoSteps::adjustAudioOffset),
        Command("dismissSiblingSuggestion", "Dismiss suggestion",
                "Hides the suggestion until the other camera is moved again.", {groupID},
                [](CommandContext& context, const Call& call) {
                    context.controller->timeline().dismissSiblingSuggestion(call.id("groupID"));
                    return JSON();
                }),
        Command::later(
            "cardSuggestion", "Card Suggestion",
            "Gives the clips of a card that would have sound with the offset of one that was moved "
            "by hand, for a clip without sound.",
            {groupID}, cardSuggestionJSON),
        Command::later(
            "applyCardSuggestion", "Apply",
            "Gives the clip the recordings that it has with the offset of another clip of its card, and "
            "that offset; with isForAllClips the other clips of the suggestion as well.",
            {groupID, {.name = "isForAllClips", .kind = boolean, .isOptional = true}}, useCardSuggestion)
            .undoneBy(undoSteps::applySuggestions),
    };
}

} // namespace

std::vector<Command> timelineCommands() {
    std::vector<Command> commands;
    for (auto* part : {&viewCommands, &moveCommands, &suggestionCommands})
        std::ranges::move((*part)(), std::back_inserter(commands));
    return commands;
}

} // namespace orvane::commands
