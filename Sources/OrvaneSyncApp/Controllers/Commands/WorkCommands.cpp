#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/UnsavedWork.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkDiagnosis.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"

#include <algorithm>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

/// The folders that a call names; it may name only some.
struct NamedFolders {
    std::optional<FileURL> video, audio;
    std::vector<FileURL> more;
    bool areRenamed = false; ///< see `areRenamed`

    std::vector<FileURL> all() const {
        std::vector<FileURL> folders = more;
        for (const auto& folder : {video, audio})
            if (folder) folders.push_back(*folder);
        return folders;
    }
};

bool isIn(const FileURL& folder, const MediaAsset& file) {
    return file.url.path.starts_with(folder.path.ends_with('/') ? folder.path : folder.path + "/");
}

/// Whether files of the work are gone, and one of them is below a named folder at the place that it had below
/// a folder of the work: the folders are those of the work under another name.
bool areRenamed(const NamedFolders& named, const std::vector<FileURL>& folders, const WorkFiles& work) {
    constexpr std::size_t enough = 50; // also a slow share answers for as many
    std::vector<const MediaAsset*> files;
    for (std::size_t i = 0; i < std::min(enough, work.groups.size()); ++i)
        files.push_back(&work.groups[i].video);
    for (std::size_t i = 0; i < std::min(enough, work.wildTracks->size()); ++i)
        files.push_back(&(*work.wildTracks)[i].audio);
    const auto isBelow = [&](const MediaAsset& file, const std::string& place) {
        return std::ranges::any_of(named.all(), [&](const FileURL& folder) {
            const auto there = platform::files::attributes(folder.path + "/" + place);
            return there && there->isRegularFile &&
                   static_cast<std::uint64_t>(there->size) == *file.fileSizeBytes;
        });
    };
    return std::ranges::any_of(files, [&](const MediaAsset* file) {
        return file->fileSizeBytes && !platform::files::exists(file->url.path) &&
               std::ranges::any_of(folders, [&](const FileURL& folder) {
                   return isIn(folder, *file) && isBelow(*file, file->url.path.substr(folder.path.size()));
               });
    });
}

/// Throws for the first folder that cannot be read.
NamedFolders namedFolders(const Call& call) {
    const auto folder = [&](std::string_view name) {
        return call.has(name) ? std::optional(readableFolder(call.text(name))) : std::nullopt;
    };
    NamedFolders named{folder("videoFolder"), folder("audioFolder"), {}};
    if (call.has("moreFolders"))
        for (const std::string& path : call.texts("moreFolders")) named.more.push_back(readableFolder(path));
    return named;
}

/// Whether one of the folders contains a file of the open work.
bool holdsFilesOf(const OpenWork& work, const std::vector<FileURL>& folders) {
    const auto isInside = [&](const MediaAsset& asset) {
        return std::ranges::any_of(folders, [&](const FileURL& folder) { return isIn(folder, asset); });
    };
    return std::ranges::any_of(work.syncGroups(),
                               [&](const SyncGroup& group) {
                                   return isInside(group.video) ||
                                          std::ranges::any_of(group.audioMatches,
                                                              [&](const AudioMatch& match) {
                                                                  return isInside(*match.audio);
                                                              });
                               }) ||
           std::ranges::any_of(work.wildTracks(),
                               [&](const WildTrack& track) { return isInside(track.audio); });
}

/// Whether the folders are of another shoot than the open session. The session's clips may be missing from
/// the work: they could not be read, or its card was empty.
bool areOfOtherShoot(const CommandContext& context, const std::optional<FileURL>& video,
                     const std::optional<FileURL>& audio, const ScanScope& scope) {
    const OpenWork& work = context.controller->work();
    std::vector<FileURL> folders = scope.moreFolders;
    for (const auto& folder : {video, audio})
        if (folder) folders.push_back(*folder);
    if (folders.empty() || !context.sessions || !context.sessions->currentSessionId()) return false;
    const bool hasClips = !work.syncGroups().empty() || !work.wildTracks().empty();
    return hasClips ? !holdsFilesOf(work, folders) : context.sessions->keepsClipsFromElsewhere(folders);
}

/// Folders that the call does not name are kept; a null removes one. An offset is counted at the rate of the
/// clips, if there are any. A scan replaces all clips, so for the folders of another shoot the work gets a
/// session of its own first, and the open session is not changed.
platform::Task takeFolders(CommandContext& context, Call call, NamedFolders named) {
    const OpenWork& work = context.controller->work();
    const auto video = call.mentions("videoFolder") ? named.video : work.videoFolderURL();
    const auto audio = call.mentions("audioFolder") ? named.audio : work.audioFolderURL();
    ScanScope scope = work.scanScope();
    if (call.mentions("moreFolders")) scope.moreFolders = std::move(named.more);
    if (call.mentions("exclude"))
        scope.exclusions = call.has("exclude") ? call.texts("exclude") : std::vector<std::string>{};
    if (video == work.videoFolderURL() && audio == work.audioFolderURL() && scope == work.scanScope())
        co_return;
    if (!named.areRenamed && areOfOtherShoot(context, video, audio, scope)) {
        co_await saveBeforeLeaving(context, call);
        context.sessions->newSession(*context.controller);
    }
    ScanController& scan = context.controller->scan();
    scan.setVideoFolderURL(video);
    scan.setAudioFolderURL(audio);
    if (scope != work.scanScope()) scan.setScope(std::move(scope));
}

/// Checks all folders before it sets one. If other folders were chosen meanwhile, those are kept.
platform::Task setFolders(CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
    if (call.has("exclude") && std::ranges::count(call.texts("exclude"), std::string()) > 0)
        throw Error(Refusal::invalidArguments, "setFolders: exclude holds an empty pattern");
    const OpenWork& work = context.controller->work();
    return lookUp(
        context.controller,
        [call, folders = work.folders(), files = context.controller->recordings().workFiles()] {
            NamedFolders named = namedFolders(call);
            named.areRenamed = areRenamed(named, folders, files);
            return named;
        },
        [&context, call, folders = work.folders(),
         scope = work.scanScope()](const std::shared_ptr<ImportController>& controller, NamedFolders named) {
            const OpenWork& present = controller->work();
            if (present.folders() != folders || present.scanScope() != scope) throw platform::Stopped();
            return takeFolders(context, call, std::move(named));
        });
}

/// Values that the call does not name are kept; a null removes one.
JSON setCorrections(CommandContext& context, const Call& call) {
    const SourceCorrections& present = context.controller->work().sourceCorrections();
    const auto rate = present.timecodeRate
                          ? std::optional(std::string(timecodeRate::name(*present.timecodeRate)))
                          : std::nullopt;
    const auto text = [&](std::string_view name, const std::optional<std::string>& held) {
        return call.mentions(name) ? call.textIfPresent(name) : held;
    };
    try {
        SourceCorrections corrections =
            SourceCorrections::fromTexts(text("soundOffset", present.soundOffset),
                                         text("soundDate", present.soundDate), text("timecodeRate", rate));
        const SyncGroupList& groups = context.controller->work().syncGroups();
        if (!groups.empty()) corrections.soundOffsetSeconds(rateOfMostClips(groups));
        const auto days = call.textIfPresent("days");
        corrections.days = days                    ? fromRawValue<MatchingDays>(*days)
                           : call.mentions("days") ? std::nullopt
                                                   : context.controller->work().keptCorrections().days;
        context.controller->scan().setCorrections(std::move(corrections));
    } catch (const CorrectionError& error) {
        throw Error(Refusal::invalidArguments, std::string("setCorrections: ") + error.what());
    }
    return {};
}

/// Ends when the clips are made and the analysis has ended that the settings may require.
platform::Task startScan(CommandContext& context, Call call, std::shared_ptr<JSON>) {
    // Weak, so that the end of the program destroys the controller, which stops the scan.
    const std::weak_ptr<ImportController> weak = context.controller;
    const bool isOfOtherWork = call.has("ofOtherWork") && call.boolean("ofOtherWork");
    if (isOfOtherWork && context.sessions && !context.controller->work().syncGroups().empty()) {
        co_await saveBeforeLeaving(context, call);
        context.sessions->leaveForOtherWork(*context.controller);
    }
    std::optional<WorkFiles> earlier;
    if (!isOfOtherWork && call.has("keepDecisions") && call.boolean("keepDecisions"))
        earlier = context.controller->recordings().workFiles();
    const platform::Task scanning = context.controller->scan().startScan(
        isOfOtherWork ? OpenWork::ScanOf::otherWork : OpenWork::ScanOf::sameWork);
    co_await scanning;
    auto controller = weak.lock();
    if (!controller) co_return;
    if (earlier) {
        const platform::Task keeping = controller->recordings().keepDecisions(std::move(*earlier));
        controller.reset();
        co_await keeping;
        controller = weak.lock();
        if (!controller) co_return;
    }
    const platform::Task analysing = controller->smartAudio().waitForAnalysisAfterScan();
    controller.reset();
    co_await analysing;
}

platform::Task reset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    co_await saveBeforeLeaving(context, call);
    if (context.sessions)
        context.sessions->close(*context.controller);
    else
        context.controller->reset();
}

/// A statement about all of the work, made on a queue.
auto madeOnQueue(const ImportController& controller, JSON (*make)(const WorkSnapshot&)) {
    return platform::onQueue(
        *controller.work().documents, controller.work().environment.mainThread,
        [work = WorkSnapshot(controller), make](const std::stop_token&) { return make(work); });
}

platform::Task state(CommandContext& context, Call, std::shared_ptr<JSON> answer) {
    auto making = madeOnQueue(*context.controller, [](const WorkSnapshot& work) { return stateJSON(work); });
    *answer = co_await making;
}

platform::Task oneGroup(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const ImportController& controller = *context.controller;
    auto making =
        platform::onQueue(*controller.work().documents, controller.work().environment.mainThread,
                          [work = WorkSnapshot(controller), group = context.group(call.id("groupID"))](
                              const std::stop_token& stop) { return groupJSON(group, work.doubts(stop)); });
    *answer = co_await making;
}

platform::Task diagnose(CommandContext& context, Call, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    co_await controller->listenForDoubts();
    auto making = madeOnQueue(*controller, diagnosisJSON);
    *answer = co_await making;
}

platform::Task compareSound(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    std::vector<UUID> clips;
    if (call.has("groupIDs"))
        clips = call.ids("groupIDs");
    else
        for (const SyncGroup& group : controller->work().syncGroups()) clips.push_back(group.id);
    const auto compared = std::make_shared<ComparedSound>();
    co_await controller->soundComparison().compare(clips, compared);
    *answer = toJSON(*compared);
}

/// Only clips that are as they were when they were compared.
JSON moveAsCompared(CommandContext& context, const Call&) {
    const auto& controller = context.controller;
    int moved = 0;
    controller->withUndo(undoSteps::adjustAudioOffset, [&] {
        for (const ComparedSound::Off& off : controller->soundComparison().latest().off) {
            const SyncGroup* clip = controller->work().syncGroups().find(off.groupID);
            if (clip == nullptr || !hasUnlockedSound(*clip) || clip->manualAudioOffsetSeconds != off.byHand)
                continue;
            const double rate = controller->timeline().timelineFrameRate(*clip);
            controller->clips().adjustAudioOffset(off.groupID, static_cast<double>(off.frames) / rate);
            ++moved;
        }
    });
    JSON answer = JSON::object();
    answer.set("changedClips", moved);
    return answer;
}

/// A whole number is written without a decimal point.
std::optional<JSON> limitJSON(const std::optional<double>& limit) {
    if (!limit) return std::nullopt;
    const auto whole = JSON(*limit).integer();
    return whole ? JSON(*whole) : JSON(*limit);
}

JSON parameterJSON(const Parameter& parameter) {
    JSON json;
    json.set("name", parameter.name);
    json.set("type", name(parameter.kind));
    json.set("required", !parameter.isOptional);
    json.setIfPresent("lowest", limitJSON(parameter.lowest));
    json.setIfPresent("highest", limitJSON(parameter.highest));
    JSON::Array choices;
    for (const std::string_view choice : parameter.choices) choices.emplace_back(std::string(choice));
    if (!choices.empty()) json.set("choices", std::move(choices));
    return json;
}

/// With a clip: whether each command is enabled for it; without one: whether it is for any clip.
JSON commandsJSON(CommandContext& context, const Call& call) {
    const SyncGroup* clip = call.has("groupID") ? &context.group(call.id("groupID")) : nullptr;
    JSON::Array list;
    for (const Command& command : allCommands()) {
        JSON json;
        json.set("id", command.id);
        json.set("title", command.title);
        json.set("help", command.help);
        if (command.step) json.set("undoActionName", command.step->actionName);
        JSON::Array parameters;
        for (const Parameter& parameter : command.parameters) parameters.push_back(parameterJSON(parameter));
        json.set("parameters", std::move(parameters));
        json.set("isEnabled", command.isEnabled(context, clip));
        list.push_back(std::move(json));
    }
    JSON json;
    json.set("version", ORVANE_VERSION);
    json.set("commands", std::move(list));
    return json;
}

JSON cancel(CommandContext& context, const Call& call) {
    return context.cancelRequest && context.cancelRequest(call.any("id"));
}

} // namespace

std::vector<Command> workCommands() {
    return {
        Command::later(
            "setFolders", "Choose Folders",
            "Chooses the folders of picture and sound, further ones, and the patterns of what is passed "
            "over in them.",
            {{"videoFolder", path, true},
             {"audioFolder", path, true},
             {"moreFolders", paths, true},
             {"exclude", texts, true},
             leaveUnsaved},
            setFolders)
            .alsoBy({"sync", "scan"}),
        Command(
            "setCorrections", "Correct the Sources",
            "Sets corrections of the files' data for the next scan: an offset of the sound, its day, the "
            "rate of the timecode, and the days that are matched.",
            {{"soundOffset", text, true},
             {"soundDate", text, true},
             {"timecodeRate", text, true},
             {.name = "days", .kind = text, .isOptional = true, .choices = RawValues<MatchingDays>::texts}},
            setCorrections)
            .alsoBy({"sync", "scan"}),
        Command::later("startScan", "Scan & Match",
                       "Reads the folders and matches what is in them. Where they are other work "
                       "(`ofOtherWork`), the open session is saved and left first; otherwise the decisions "
                       "about the clips can be kept (`keepDecisions`).",
                       {{"ofOtherWork", boolean, true}, {"keepDecisions", boolean, true}, leaveUnsaved},
                       startScan)
            .alsoBy({"sync", "scan"})
            .otherWork()
            .when([](const CommandContext& context) { return context.controller->scan().canScan(); }),
        Command("stopScan", "Stop Scan", "Stops the scan and leaves all as it was.", {},
                [](CommandContext& context, const Call&) {
                    context.controller->scan().stopScan();
                    return JSON();
                })
            .when([](const CommandContext& context) {
                const ScanState state = context.controller->scan().scanState();
                return state != ScanState::idle && state != ScanState::done;
            })
            .servedAtOnce(),
        Command::later("reset", "Close", "Closes the open work; its session is kept.", {leaveUnsaved}, reset)
            .otherWork()
            .inMenu(Menu::file, 510, "Close"),
        Command::later("state", "State of the Work", "Gives the open work.", {}, state)
            .alsoBy({"scan", "session"}),
        Command::later("diagnose", "Diagnosis",
                       "Gives what is on the cards, and each doubt and how to fix it; compares the sound of "
                       "some clips of each card with that of their cameras.",
                       {}, diagnose)
            .alsoBy({"diagnose"}),
        Command::later("compareSound", "Compare Sound with Cameras",
                       "Compares the sound of each clip, or of those that are named, with what its camera "
                       "recorded; gives those whose sound is off, and by how much.",
                       {{.name = "groupIDs", .kind = texts, .isOptional = true}}, compareSound)
            .when(hasSoundWhileIdle),
        Command(
            "moveAsCompared", "Move Sound as Compared",
            "Moves the sound of the clips that the last comparison found off, by the frames that it gave; "
            "not of those that are locked or were moved since.",
            {}, moveAsCompared)
            .undoneBy(undoSteps::adjustAudioOffset)
            .when([](const CommandContext& context) {
                return !context.controller->soundComparison().latest().off.empty() && isScanIdle(context);
            }),
        Command::later("group", "One Clip", "Gives one clip, with the doubts about it.", {{"groupID", id}},
                       oneGroup),
        Command("commands", "Commands",
                "Lists every command with what it takes and whether it is enabled now, and the version of "
                "the program.",
                {{"groupID", id, true}}, commandsJSON),
        Command("version", "Version", "Gives the version of the program.", {},
                [](CommandContext&, const Call&) { return JSON(ORVANE_VERSION); }),
        Command("cancel", "Cancel", "Stops the request of an identifier.", {{"id", any}}, cancel)
            .servedAtOnce(),
    };
}

} // namespace orvane::commands
