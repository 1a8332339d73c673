#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncCore/Models/RawValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"
#include "OrvaneSyncCore/Services/Shortcuts/ReviewKeys.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;
using Controller = ImportController;

constexpr std::array<std::string_view, 3> syncMethodNames{"timecode", "clap", "manual"};

/// A command that runs an operation as an undo step and answers null.
template <class Operation>
Command edit(std::string_view id, std::string_view help, const UndoStep& step,
             std::vector<Parameter> parameters, Operation operation) {
    return Command(id, step.actionName, help, std::move(parameters),
                   [id, step, operation](CommandContext& context, const Call& call) {
                       Controller& controller = *context.controller;
                       checked(id, [&] { controller.withUndo(step, [&] { operation(controller, call); }); });
                       return JSON();
                   })
        .undoneBy(step);
}

/// The same for an operation that analyses the clip again if it was analysed before; ends after the analysis.
template <class Operation>
Command editAndListen(std::string_view id, std::string_view help, const UndoStep& step,
                      std::vector<Parameter> parameters, Operation operation) {
    return Command::later(id, step.actionName, help, std::move(parameters),
                          [id, step, operation](CommandContext& context, const Call& call,
                                                const std::shared_ptr<JSON>&) {
                              return checked(id, [&] {
                                  return context.withUndo(
                                      step, [&] { return operation(*context.controller, call); });
                              });
                          })
        .undoneBy(step);
}

template <class Topic>
Command onGroup(std::string_view id, std::string_view help, const UndoStep& step,
                void (Topic::*operation)(UUID), Command::Applies applies = nullptr) {
    return edit(id, help, step, {groupID},
                [operation](Controller& controller, const Call& call) {
                    (topic<Topic>(controller).*operation)(call.id("groupID"));
                })
        .forClips(applies);
}

/// A command that also has a key.
Command onGroup(std::string_view id, ShortcutAction action, const UndoStep& step,
                void (ClipEditing::*operation)(UUID)) {
    Command row = onGroup(id, helpText(action), step, operation);
    row.title = label(action);
    row.action = action;
    return row;
}

Command switching(std::string_view id, std::string_view help, const UndoStep& step,
                  void (ClipEditing::*operation)(UUID, bool)) {
    return edit(id, help, step, {groupID, {"enabled", boolean}},
                [operation](Controller& controller, const Call& call) {
                    (controller.clips().*operation)(call.id("groupID"), call.boolean("enabled"));
                });
}

bool isAmbiguousAndUnlocked(const SyncGroup& group) {
    return isUnlocked(group) && group.matchStatus.kind == MatchStatus::Kind::ambiguous;
}
bool isMOS(const SyncGroup& group) { return group.isMOS(); }
bool hasOffset(const SyncGroup& group) { return group.manualAudioOffsetSeconds != 0; }
bool hasRangeOverride(const SyncGroup& group) { return !group.manualBlockOverrides.empty(); }
bool hasWildTracks(const CommandContext& context) { return !context.controller->work().wildTracks().empty(); }

/// The audio in the call: the identifier of an asset in the pool, or an asset in the form in which other
/// commands return it.
MediaAsset audio(const Controller& controller, const Call& call) {
    const JSON given = call.any("audio");
    if (const std::string* text = given.string()) {
        const auto wanted = UUID::fromText(*text);
        if (const MediaAsset* asset = wanted ? controller.recordings().audioInPool(*wanted) : nullptr)
            return *asset;
        throw Error(Refusal::failed, "attachAudioToGroup: no audio has this identifier");
    }
    try {
        return fromJSON<MediaAsset>(given);
    } catch (const DecodingError& error) {
        throw Error(Refusal::invalidArguments, std::string("attachAudioToGroup: audio: ") + error.what());
    }
}

/// A lock means that the sound is verified. For the clip in view this is its first recording, so locking an
/// ambiguous clip decides for that one.
void settleIfInView(CommandContext& context, const UUID& clip) {
    const SyncGroup* group = context.controller->work().syncGroups().find(clip);
    if (group != nullptr && isAmbiguousAndUnlocked(*group) && context.review().shows(clip))
        context.controller->recordings().confirmAmbiguousMatch(clip);
}

/// Whether the lock of this clip was followed by a correction of its offset.
bool isCorrected(const SyncGroup& group) { return !group.isMOS() && isMovedSinceLock(group); }

std::string_view titleOfLock(const SyncGroup& group) {
    return isCorrected(group) ? "Lock at This Offset" : std::string_view();
}

/// A single clip that was moved since its lock is locked at its present offset: whoever moves a locked clip
/// and presses the key of the lock has corrected it. Of several clips each is unlocked or locked. For the
/// clip in view, the window also says when the lock is removed, until it is locked again.
JSON toggleLock(CommandContext& context, const Call& call) {
    const UUID clip = call.id("groupID");
    const SyncGroup* group = context.controller->work().syncGroups().find(clip);
    const bool isLocked = group != nullptr && group->isLocked;
    const bool isLockedAgain = isLocked && isCorrected(*group) && !context.isForSeveralClips;
    const UndoStep& step = !context.isWindow            ? undoSteps::toggleLocked
                           : isLocked && !isLockedAgain ? undoSteps::unlock
                                                        : undoSteps::lock;
    context.controller->withUndo(step, [&] {
        settleIfInView(context, clip);
        for (int presses = isLockedAgain ? 2 : 1; presses > 0; --presses)
            context.controller->clips().toggleLocked(clip);
    });
    const ReviewViewModel& review = context.review();
    if (review.sayWhyNot && review.shows(clip))
        review.sayWhyNot(!isLocked ? ""
                         : isLockedAgain
                             ? "The clip is locked at its present offset. ⟨lockCurrent⟩ again unlocks it."
                             : "The clip is unlocked. ⟨lockCurrent⟩ locks it again.");
    return {};
}

/// If the call gives no source of names, the names are made by the setting.
JSON lockCluster(CommandContext& context, const Call& call) {
    const std::string source = call.textIfPresent("source").value_or(
        std::string(rawValue(context.settings->get(settings::clipNamingSource))));
    const std::string pattern =
        call.textIfPresent("customPattern").value_or(context.settings->get(settings::customNamingPattern));
    context.controller->withUndo(undoSteps::lockAllInCluster, [&] {
        settleIfInView(context, call.id("of"));
        context.controller->clips().lockAllInCluster(call.id("of"), GroupNaming::sourceFrom(source), pattern);
    });
    return {};
}

platform::Task attachFile(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    return lookUp(
        context.controller, [path = call.text("path")] { return readableFile(path); },
        [clip = call.id("groupID")](const std::shared_ptr<ImportController>& controller, FileURL file) {
            return controller->recordings().chooseAndAttachAudio(clip, std::move(file));
        });
}

JSON batchRename(CommandContext& context, const Call& call) {
    BatchRenamer renamer;
    renamer.find = call.textIfPresent("find").value_or("");
    renamer.replace = call.textIfPresent("replace").value_or("");
    renamer.padDigits = call.has("padDigits") ? call.integer("padDigits") : 0;
    renamer.prefix = call.textIfPresent("prefix").value_or("");
    renamer.suffix = call.textIfPresent("suffix").value_or("");
    context.controller->clips().applyBatchRename(
        renamer, call.has("groupIDs") ? std::optional(call.ids("groupIDs")) : std::nullopt);
    return {};
}

JSON chooseSyncMethod(CommandContext& context, const Call& call) {
    const auto method = fromJSON<SyncMethod>(call.any("method"));
    context.controller->withUndo(undoSteps::setSyncMethod, [&] {
        context.controller->clips().setSyncMethod(call.id("groupID"), method);
    });
    return {};
}

platform::Task overrideRange(Controller& controller, const Call& call) {
    const double start = call.number("startSeconds"), end = call.number("endSeconds");
    if (std::abs(end - start) < TrackEditing::shortestOverrideSeconds)
        throw OutOfRange(platform::text::formatted("the range must last %g s at least",
                                                   TrackEditing::shortestOverrideSeconds));
    return controller.tracks().addBlockOverride(call.id("groupID"), start, end, call.integer("trackIndex"),
                                                call.has("overrideID") ? std::optional(call.id("overrideID"))
                                                                       : std::nullopt);
}

std::vector<Command> flagCommands() {
    using namespace undoSteps;
    return {
        onGroup("resetAudioOffset", "Puts the sound back to its place by timecode.", resetAudioOffset,
                &ClipEditing::resetAudioOffset, hasOffset),
        onGroup("toggleApproved", ShortcutAction::toggleApproved, toggleApproved,
                &ClipEditing::toggleApproved)
            .inMenu(Menu::clip, 110, reviewKeys::approve),
        Command("toggleLocked", ShortcutAction::lockCurrent, {groupID}, toggleLock)
            .undoneBy(toggleLocked)
            .titled(titleOfLock)
            .inMenu(Menu::clip, 120),
        onGroup("toggleMOS", "Marks a clip without sound as meant to have none, or takes the mark away.",
                toggleMOS, &ClipEditing::toggleMOS, isMOS),
        onGroup("togglePickup", "Marks the clip as a pickup, or takes the mark away.", togglePickup,
                &ClipEditing::togglePickup)
            .inMenu(Menu::clip, 150),
        onGroup("markScenePickupFromHere", "Marks the takes of this scene from this one on as pickups.",
                markScenePickupFromHere, &ClipEditing::markScenePickupFromHere),
        onGroup("toggleExcludedFromExport", "Excludes the clip from the export, or includes it again.",
                toggleExcludedFromExport, &ClipEditing::toggleExcludedFromExport)
            .inMenu(Menu::clip, 130),
        onGroup("toggleExcludedFromMulticam", "Excludes the clip from multicam clips, or includes it again.",
                toggleExcludedFromMulticam, &ClipEditing::toggleExcludedFromMulticam)
            .inMenu(Menu::clip, 140),
        onGroup("confirmAmbiguousMatch", "Takes the recordings of an ambiguous clip as they are.",
                confirmAmbiguousMatch, &RecordingEditing::confirmAmbiguousMatch, isAmbiguousAndUnlocked)
            .inMenu(Menu::clip, 220),
        onGroup(
            "removeVideoFromSync",
            "Takes the clip out of the list and the document; its file stays, and a new scan finds it again.",
            removeVideoFromSync, &RecordingEditing::removeVideoFromSync, isUnlocked),
        Command::later("resyncClip", resyncClip.actionName, "Matches the clip again; manual decisions stay.",
                       {groupID},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           return context.controller->recordings().resyncClip(call.id("groupID"));
                       })
            .undoneBy(resyncClip)
            .inMenu(Menu::clip, 230, "Ctrl+R"),
        onGroup("resetClipToAutoSync", "Takes back every manual decision about the clip but its matches.",
                resetClipToAutoSync, &ClipEditing::resetClipToAutoSync)
            .inMenu(Menu::clip, 240),
        onGroup("resetMasterGain", "Lets the master gain follow the measured loudness again.",
                resetMasterGain, &TrackEditing::resetMasterGain),
        switching("setGenerateNativeMOS",
                  "Chooses whether an off-speed clip is also exported at its own rate.", setGenerateNativeMOS,
                  &ClipEditing::setGenerateNativeMOS),
        switching("setGenerateProjectRateClip",
                  "Chooses whether an off-speed clip is also exported at the rate of the project.",
                  setGenerateProjectRateClip, &ClipEditing::setGenerateProjectRateClip),
    };
}

std::vector<Command> offsetCommands() {
    using namespace undoSteps;
    return {
        edit("adjustAudioOffset", "Moves the sound of the clip by seconds.", adjustAudioOffset,
             {groupID,
              {.name = "deltaSeconds",
               .kind = number,
               .lowest = -ClipEditing::furthestOffsetSeconds,
               .highest = ClipEditing::furthestOffsetSeconds}},
             [](Controller& controller, const Call& call) {
                 controller.clips().adjustAudioOffset(call.id("groupID"), call.number("deltaSeconds"));
             }),
        edit("setAudioAnchor", "Sets the anchor in the sound, in seconds of the recording, or takes it away.",
             setAudioAnchor,
             {groupID,
              {.name = "secondsInAudio",
               .kind = number,
               .isOptional = true,
               .lowest = 0,
               .highest = ClipEditing::furthestOffsetSeconds}},
             [](Controller& controller, const Call& call) {
                 controller.clips().setAudioAnchor(call.id("groupID"),
                                                   call.numberIfPresent("secondsInAudio"));
             }),
        Command(
            "lockAllInCluster", ShortcutAction::lockAllInCluster,
            {{"of", id},
             {.name = "source", .kind = text, .isOptional = true, .choices = settingTexts<ClipNamingSource>},
             {"customPattern", text, true}},
            lockCluster)
            .undoneBy(lockAllInCluster),
    };
}

std::vector<Command> nameCommands() {
    using namespace undoSteps;
    return {
        edit("setManualClipName", "Gives the clip a name of its own; a blank one removes it.",
             setManualClipName, {groupID, {"name", text}},
             [](Controller& controller, const Call& call) {
                 controller.clips().setManualClipName(call.id("groupID"), call.text("name"));
             }),
        Command(
            "batchRename", "Rename Clips…",
            "Renames all clips, or the given ones, but not those that have the name of their camera file: "
            "replaces a text, pads numbers with zeros, adds a prefix and a suffix.",
            {{.name = "find", .kind = text, .isOptional = true},
             {.name = "replace", .kind = text, .isOptional = true},
             {.name = "padDigits",
              .kind = integer,
              .isOptional = true,
              .lowest = 0,
              .highest = BatchRenamer::mostPadDigits},
             {.name = "prefix", .kind = text, .isOptional = true},
             {.name = "suffix", .kind = text, .isOptional = true},
             {.name = "groupIDs", .kind = texts, .isOptional = true}},
            batchRename)
            .undoneBy(setManualClipName)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::clip, 510),
        Command("clearAllManualNames", "Clear All Manual Names",
                "Removes all names that were entered by hand; the naming rules name the clips again.", {},
                [](CommandContext& context, const Call&) {
                    context.controller->clips().clearAllManualNames();
                    return JSON();
                })
            .undoneBy(setManualClipName)
            .when(hasClipsWhileIdle),
    };
}

std::vector<Command> valueCommands() {
    using namespace undoSteps;
    return {
        Command("setSyncMethod", undoSteps::setSyncMethod.actionName, "Sets how the clip was synchronized.",
                {groupID, {.name = "method", .kind = text, .choices = syncMethodNames}}, chooseSyncMethod)
            .undoneBy(setSyncMethod),
        edit(
            "setManualSensorFrameRate",
            "Sets the sensor rate of the clip in frames per second, or lets the file decide.",
            setManualSensorFrameRate,
            {groupID, {.name = "fps", .kind = number, .isOptional = true, .lowest = 0.01, .highest = 100000}},
            [](Controller& controller, const Call& call) {
                controller.clips().setManualSensorFrameRate(call.id("groupID"), call.numberIfPresent("fps"));
            })
            .forClips(isUnlocked),
        editAndListen("addBlockOverride",
                      "Chooses the track that is heard in a range of the clip, in seconds from its start; "
                      "replaces the range that `overrideID` names, if it is given.",
                      addBlockOverride,
                      {groupID,
                       {.name = "startSeconds", .kind = number, .lowest = 0},
                       {.name = "endSeconds", .kind = number, .lowest = 0},
                       {.name = "trackIndex", .kind = integer, .lowest = 1},
                       {"overrideID", id, true}},
                      overrideRange),
        editAndListen("removeBlockOverride", "Removes a range that was chosen by hand.", removeBlockOverride,
                      {groupID, {"overrideID", id}},
                      [](Controller& controller, const Call& call) {
                          return controller.tracks().removeBlockOverride(call.id("groupID"),
                                                                         call.id("overrideID"));
                      })
            .forClips(hasRangeOverride),
        edit("setMasterGain", "Sets the master gain in dB.", setMasterGain,
             {groupID,
              {.name = "gainDB",
               .kind = number,
               .lowest = TrackEditing::lowestGainDB,
               .highest = TrackEditing::highestGainDB},
              {"auto", boolean}},
             [](Controller& controller, const Call& call) {
                 controller.tracks().setMasterGain(call.id("groupID"), call.number("gainDB"),
                                                   call.boolean("auto"));
             }),
    };
}

std::vector<Command> recordingCommands() {
    using namespace undoSteps;
    return {
        Command("attachAudioToGroup", undoSteps::attachAudioToGroup.actionName,
                "Adds a recording to the clip.", {groupID, {"audio", any}},
                [](CommandContext& context, const Call& call) {
                    const MediaAsset asset = audio(*context.controller, call);
                    context.controller->withUndo(attachAudioToGroup, [&] {
                        context.controller->recordings().attachAudioToGroup(call.id("groupID"), asset);
                    });
                    return JSON();
                })
            .undoneBy(attachAudioToGroup)
            .forClips(isUnlocked),
        Command::later("chooseAndAttachAudio", "Choose and Attach Audio…",
                       "Reads a sound file and adds it to the clip.", {groupID, {"path", path}}, attachFile)
            .undoneBy(attachAudioToGroup)
            .forClips(isUnlocked),
        edit("removeAudioMatch", "Takes a recording from the clip.", removeAudioMatch,
             {groupID, {"matchID", id}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().removeAudioMatch(call.id("groupID"), call.id("matchID"));
             })
            .forClips(hasUnlockedSound),
        Command::later("resyncAllClips", resyncAllClips.actionName,
                       "Matches all clips again; manual decisions stay.", {},
                       [](CommandContext& context, const Call&, const std::shared_ptr<JSON>&) {
                           return context.controller->recordings().resyncAllClips();
                       })
            .undoneBy(resyncAllClips)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::clip, 410),
        Command::later("resetAllClipsToAutoSync", "Reset All Clips",
                       "Removes the manual decisions about all clips; cannot be undone.", {},
                       [](CommandContext& context, const Call&, const std::shared_ptr<JSON>&) {
                           return context.controller->clips().resetAllClipsToAutoSync();
                       })
            .when(hasClipsWhileIdle)
            .inMenu(Menu::clip, 420),
        edit("renameWildTrack", "Names a recording without picture.", renameWildTrack,
             {{"id", id}, {"to", text}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().renameWildTrack(call.id("id"), call.text("to"));
             })
            .when(hasWildTracks),
        edit("toggleWildTrackApproved", "Approves a recording without picture, or takes the approval back.",
             toggleWildTrackApproved, {{"id", id}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().toggleWildTrackApproved(call.id("id"));
             })
            .when(hasWildTracks),
    };
}

JSON undoStateJSON(const UndoState& state) {
    JSON json;
    json.set("canUndo", state.canUndo);
    json.set("canRedo", state.canRedo);
    json.setIfPresent("undoActionName", state.undoActionName);
    json.setIfPresent("redoActionName", state.redoActionName);
    return json;
}

std::vector<Command> undoCommands() {
    return {
        Command("undo", ShortcutAction::undo, {},
                [](CommandContext& context, const Call&) {
                    context.controller->undo();
                    context.controller->smartAudio().restoreAfterUndo();
                    return JSON();
                })
            .when([](const CommandContext& context) {
                return isScanIdle(context) && context.controller->work().undoState().canUndo;
            })
            .inMenu(Menu::edit, 110),
        Command("redo", ShortcutAction::redo, {},
                [](CommandContext& context, const Call&) {
                    context.controller->redo();
                    context.controller->smartAudio().restoreAfterUndo();
                    return JSON();
                })
            .when([](const CommandContext& context) {
                return isScanIdle(context) && context.controller->work().undoState().canRedo;
            })
            .inMenu(Menu::edit, 120),
        Command("undoState", "What Can Be Undone",
                "Gives the names of the steps that “undo” and “redo” would take.", {},
                [](CommandContext& context, const Call&) {
                    return undoStateJSON(context.controller->work().undoState());
                }),
    };
}

} // namespace

std::vector<Command> editCommands() {
    std::vector<Command> commands;
    for (auto* part :
         {&flagCommands, &offsetCommands, &nameCommands, &valueCommands, &recordingCommands, &undoCommands})
        std::ranges::move((*part)(), std::back_inserter(commands));
    return commands;
}

} // namespace orvane::commands
