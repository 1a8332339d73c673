#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCLI/Serve/Desk.h"
#include "OrvaneSyncCLI/Serve/Methods.h"
#include "OrvaneSyncCore/Models/RawValues.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsReader.h"

#include <algorithm>

namespace orvane::cli::rpc {

namespace {

using enum Parameter::Kind;
using Controller = ImportController;

const Parameter groupID{"groupID", id};

/// An operation under its undo step; it answers null.
template <class Operation>
Method edit(std::string_view name, const UndoStep& step, std::vector<Parameter> parameters,
            Operation operation) {
    return {name, std::move(parameters), [step, operation](Desk& desk, const Call& call) {
                Controller& controller = *desk.controller;
                controller.withUndo(step, [&] { operation(controller, call); });
                return JSON();
            }};
}

/// The same for an operation that has the clip analysed again, if it was; done when it has been.
template <class Operation>
Method editAndListen(std::string_view name, const UndoStep& step, std::vector<Parameter> parameters,
                     Operation operation) {
    return Method::later(name, std::move(parameters),
                         [step, operation](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                             return desk.withUndo(step, [&] { return operation(*desk.controller, call); });
                         });
}

template <class Topic>
Method onGroup(std::string_view name, const UndoStep& step, void (Topic::*operation)(UUID)) {
    return edit(name, step, {groupID}, [operation](Controller& controller, const Call& call) {
        (topic<Topic>(controller).*operation)(call.id("groupID"));
    });
}

Method switching(std::string_view name, const UndoStep& step, void (ClipEditing::*operation)(UUID, bool)) {
    return edit(name, step, {groupID, {"enabled", boolean}},
                [operation](Controller& controller, const Call& call) {
                    (controller.clips().*operation)(call.id("groupID"), call.boolean("enabled"));
                });
}

SyncMethod syncMethod(const Call& call) {
    try {
        return fromJSON<SyncMethod>(call.any("method"));
    } catch (const DecodingError&) {
        throw Error(ErrorCode::invalidParams,
                    "setSyncMethod: there is no method '" + call.text("method") + "'");
    }
}

/// An asset of the pool by its identifier, or an asset as other methods give it.
MediaAsset audio(const Controller& controller, const Call& call) {
    const JSON given = call.any("audio");
    if (const std::string* text = given.string()) {
        const auto wanted = UUID::fromText(*text);
        if (const MediaAsset* asset = wanted ? controller.recordings().audioInPool(*wanted) : nullptr)
            return *asset;
        throw Error(ErrorCode::operationFailed, "attachAudioToGroup: no audio has this identifier");
    }
    try {
        return fromJSON<MediaAsset>(given);
    } catch (const DecodingError& error) {
        throw Error(ErrorCode::invalidParams, std::string("attachAudioToGroup: audio: ") + error.what());
    }
}

/// By the names that the clips have by the settings, where the call does not say by which.
JSON lockCluster(Desk& desk, const Call& call) {
    const SettingsReader settings(*desk.settings);
    const std::string source = call.textIfPresent("source").value_or(settings.text("clipNamingSource"));
    const auto known = SettingsCatalogue::choices("clipNamingSource");
    if (call.has("source") && std::ranges::find(known, source) == known.end())
        throw Error(ErrorCode::invalidParams, "lockAllInCluster: there is no source '" + source + "'");
    const std::string pattern =
        call.textIfPresent("customPattern").value_or(settings.text("customNamingPattern"));
    desk.controller->withUndo(undoSteps::lockAllInCluster, [&] {
        desk.controller->clips().lockAllInCluster(call.id("of"), GroupNaming::sourceFrom(source), pattern);
    });
    return {};
}

std::vector<Method> flagMethods() {
    using namespace undoSteps;
    return {
        onGroup("resetAudioOffset", resetAudioOffset, &ClipEditing::resetAudioOffset),
        onGroup("toggleApproved", toggleApproved, &ClipEditing::toggleApproved),
        onGroup("toggleLocked", toggleLocked, &ClipEditing::toggleLocked),
        onGroup("toggleMOS", toggleMOS, &ClipEditing::toggleMOS),
        onGroup("togglePickup", togglePickup, &ClipEditing::togglePickup),
        onGroup("markScenePickupFromHere", markScenePickupFromHere, &ClipEditing::markScenePickupFromHere),
        onGroup("toggleExcludedFromExport", toggleExcludedFromExport, &ClipEditing::toggleExcludedFromExport),
        onGroup("toggleExcludedFromMulticam", toggleExcludedFromMulticam,
                &ClipEditing::toggleExcludedFromMulticam),
        onGroup("confirmAmbiguousMatch", confirmAmbiguousMatch, &RecordingEditing::confirmAmbiguousMatch),
        onGroup("removeVideoFromSync", removeVideoFromSync, &RecordingEditing::removeVideoFromSync),
        onGroup("resyncClip", resyncClip, &RecordingEditing::resyncClip),
        onGroup("resetClipToAutoSync", resetClipToAutoSync, &ClipEditing::resetClipToAutoSync),
        onGroup("resetMasterGain", resetMasterGain, &TrackEditing::resetMasterGain),
        switching("setGenerateNativeMOS", setGenerateNativeMOS, &ClipEditing::setGenerateNativeMOS),
        switching("setGenerateProjectRateClip", setGenerateProjectRateClip,
                  &ClipEditing::setGenerateProjectRateClip),
    };
}

std::vector<Method> valueMethods() {
    using namespace undoSteps;
    return {
        edit("adjustAudioOffset", adjustAudioOffset, {groupID, {"deltaSeconds", number}},
             [](Controller& controller, const Call& call) {
                 controller.clips().adjustAudioOffset(call.id("groupID"), call.number("deltaSeconds"));
             }),
        edit("setAudioAnchor", setAudioAnchor, {groupID, {"secondsInAudio", number, true}},
             [](Controller& controller, const Call& call) {
                 controller.clips().setAudioAnchor(call.id("groupID"),
                                                   call.numberIfPresent("secondsInAudio"));
             }),
        Method("lockAllInCluster", {{"of", id}, {"source", text, true}, {"customPattern", text, true}},
               lockCluster),
        edit("setManualClipName", setManualClipName, {groupID, {"name", text}},
             [](Controller& controller, const Call& call) {
                 controller.clips().setManualClipName(call.id("groupID"), call.text("name"));
             }),
        Method("setSyncMethod", {groupID, {"method", text}},
               [](Desk& desk, const Call& call) {
                   const SyncMethod method = syncMethod(call);
                   desk.controller->withUndo(setSyncMethod, [&] {
                       desk.controller->clips().setSyncMethod(call.id("groupID"), method);
                   });
                   return JSON();
               }),
        edit("setManualSensorFrameRate", setManualSensorFrameRate, {groupID, {"fps", number, true}},
             [](Controller& controller, const Call& call) {
                 controller.clips().setManualSensorFrameRate(call.id("groupID"), call.numberIfPresent("fps"));
             }),
        editAndListen("addBlockOverride", addBlockOverride,
                      {groupID, {"startSeconds", number}, {"endSeconds", number}, {"trackIndex", integer}},
                      [](Controller& controller, const Call& call) {
                          return controller.tracks().addBlockOverride(
                              call.id("groupID"), call.number("startSeconds"), call.number("endSeconds"),
                              call.integer("trackIndex"));
                      }),
        editAndListen("removeBlockOverride", removeBlockOverride, {groupID, {"overrideID", id}},
                      [](Controller& controller, const Call& call) {
                          return controller.tracks().removeBlockOverride(call.id("groupID"),
                                                                         call.id("overrideID"));
                      }),
        edit("setMasterGain", setMasterGain, {groupID, {"gainDB", number}, {"auto", boolean}},
             [](Controller& controller, const Call& call) {
                 controller.tracks().setMasterGain(call.id("groupID"), call.number("gainDB"),
                                                   call.boolean("auto"));
             }),
    };
}

std::vector<Method> audioListMethods() {
    using namespace undoSteps;
    return {
        Method("attachAudioToGroup", {groupID, {"audio", any}},
               [](Desk& desk, const Call& call) {
                   const MediaAsset asset = audio(*desk.controller, call);
                   desk.controller->withUndo(attachAudioToGroup, [&] {
                       desk.controller->recordings().attachAudioToGroup(call.id("groupID"), asset);
                   });
                   return JSON();
               }),
        Method::later("chooseAndAttachAudio", {groupID, {"path", path}},
                      [](Desk& desk, const Call& call, const std::shared_ptr<JSON>&) {
                          return desk.controller->recordings().chooseAndAttachAudio(
                              call.id("groupID"), readableFile(call.text("path")));
                      }),
        edit("removeAudioMatch", removeAudioMatch, {groupID, {"matchID", id}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().removeAudioMatch(call.id("groupID"), call.id("matchID"));
             }),
        edit("resyncAllClips", resyncAllClips, {},
             [](Controller& controller, const Call&) { controller.recordings().resyncAllClips(); }),
        Method::later("resetAllClipsToAutoSync", {},
                      [](Desk& desk, const Call&, const std::shared_ptr<JSON>&) {
                          return desk.controller->clips().resetAllClipsToAutoSync();
                      }),
        edit("renameWildTrack", renameWildTrack, {{"id", id}, {"to", text}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().renameWildTrack(call.id("id"), call.text("to"));
             }),
        edit("toggleWildTrackApproved", toggleWildTrackApproved, {{"id", id}},
             [](Controller& controller, const Call& call) {
                 controller.recordings().toggleWildTrackApproved(call.id("id"));
             }),
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

std::vector<Method> undoMethods() {
    return {
        Method("undo", {},
               [](Desk& desk, const Call&) {
                   desk.controller->undo();
                   return JSON();
               }),
        Method("redo", {},
               [](Desk& desk, const Call&) {
                   desk.controller->redo();
                   return JSON();
               }),
        Method("undoState", {},
               [](Desk& desk, const Call&) { return undoStateJSON(desk.controller->work().undoState()); }),
    };
}

} // namespace

std::vector<Method> editMethods() {
    std::vector<Method> methods;
    for (auto* part : {&flagMethods, &valueMethods, &audioListMethods, &undoMethods})
        std::ranges::move((*part)(), std::back_inserter(methods));
    return methods;
}

} // namespace orvane::cli::rpc
