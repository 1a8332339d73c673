#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CardOffsets.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"

#include <algorithm>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

platform::Task writeReview(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const ImportController& controller = *context.controller;
    const OutputPermission permission{call.has("overwrite") && call.boolean("overwrite"), "overwrite: true"};
    auto writing =
        platform::onQueue(*controller.work().documents, controller.work().environment.mainThread,
                          [work = WorkSnapshot(controller), permission, output = call.text("output"),
                           inputs = inputsOf(controller)](const std::stop_token& stop) {
                              const std::vector<ReviewLine> lines = reviewLines(work, stop);
                              platform::throwIfStopped(stop);
                              writeReviewFile(output, lines, inputs(), permission);
                              return static_cast<int>(lines.size());
                          });
    const int clips = co_await writing;
    JSON json;
    json.set("output", call.text("output"));
    json.set("clips", clips);
    *answer = std::move(json);
}

platform::Task applied(std::shared_ptr<ImportController> controller, FileURL file,
                       std::shared_ptr<JSON> answer) {
    auto reading = platform::onQueue(
        *controller->work().documents, controller->work().environment.mainThread,
        [file = std::move(file), work = WorkSnapshot(*controller)](const std::stop_token& stop) {
            return readDecisions(work, readReviewFile(file.path, stop), stop);
        });
    const ReviewReading read = co_await reading;
    carryOut(*controller, undoSteps::applyReview, read.decisions);
    JSON::Array problems;
    for (const std::string& problem : read.problems) problems.emplace_back(problem);
    JSON json;
    json.set("changedClips", static_cast<int>(read.decisions.size()));
    json.set("warnings", std::move(problems));
    *answer = std::move(json);
}

platform::Task applyReviewFile(CommandContext& context, const Call& call,
                               const std::shared_ptr<JSON>& answer) {
    return lookUp(
        context.controller, [path = call.text("path")] { return readableFile(path); },
        [answer](std::shared_ptr<ImportController> controller, FileURL file) {
            return applied(std::move(controller), std::move(file), answer);
        });
}

platform::Task applySuggestions(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const std::shared_ptr<ImportController> controller = context.controller;
    std::vector<UUID> groupIDs;
    if (call.has("groupIDs"))
        groupIDs = call.ids("groupIDs");
    else
        for (const SyncGroup& group : controller->work().syncGroups()) groupIDs.push_back(group.id);
    auto suggesting = platform::onQueue(
        *controller->work().documents, controller->work().environment.mainThread,
        [groupIDs = std::move(groupIDs), work = WorkSnapshot(*controller)](const std::stop_token& stop) {
            return suggestedDecisions(work, groupIDs, stop);
        });
    const std::vector<ReviewDecision> decisions = co_await suggesting;
    carryOut(*controller, undoSteps::applySuggestions, decisions);
    *answer = JSON::object();
    answer->set("changedClips", static_cast<int>(decisions.size()));
}

platform::Task applySoundOffset(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const std::shared_ptr<ImportController> controller = context.controller;
    SourceCorrections corrections = controller->work().sourceCorrections();
    MatchRules rules = controller->work().matchRules();
    try {
        corrections.soundOffset = call.text("soundOffset");
        corrections.check();
        rules.soundOffsetSeconds =
            corrections.soundOffsetSeconds(rateOfMostClips(controller->work().syncGroups()));
    } catch (const CorrectionError& error) {
        throw Error(Refusal::invalidArguments, std::string("applySoundOffset: ") + error.what());
    }
    const std::vector<UUID> groupIDs = call.ids("groupIDs");
    auto matching = platform::onQueue(
        *controller->work().documents, controller->work().environment.mainThread,
        [groupIDs, rules, files = controller->recordings().workFiles()](const std::stop_token& stop) {
            platform::throwIfStopped(stop);
            std::vector<const SyncGroup*> clips;
            for (const UUID& id : groupIDs)
                if (const SyncGroup* clip = files.groups.find(id); clip != nullptr && lacksSound(*clip))
                    clips.push_back(clip);
            return clipsMatchedAlone(clips, files.copiedAudioPool(), rules, files.groups);
        });
    const std::vector<CardSuggestion::Clip> found = co_await matching;
    const SyncGroupList before = controller->work().syncGroups();
    giveSound(*controller, found);
    const SyncGroupList& now = controller->work().syncGroups();
    JSON::Array without;
    for (const UUID& id : groupIDs)
        if (const SyncGroup* clip = now.find(id); clip != nullptr && lacksSound(*clip))
            without.emplace_back(id.text());
    *answer = JSON::object();
    answer->set("changedClips", static_cast<int>(now.changesSince(before).changed.size()));
    answer->set("withoutSound", std::move(without));
}

bool isAmbiguous(const SyncGroup& group) {
    return group.matchStatus.kind == MatchStatus::Kind::ambiguous && !group.isLocked;
}
bool hasAmbiguous(const CommandContext& context) {
    const SyncGroupList& groups = context.controller->work().syncGroups();
    return std::any_of(groups.begin(), groups.end(), isAmbiguous);
}
} // namespace

std::vector<Command> reviewCommands() {
    namespace steps = undoSteps;
    return {
        Command::later("writeReview", "Write Review Table…",
                       "Writes the clips as a table to decide about them in a spreadsheet.",
                       {{"output", path}, {"overwrite", boolean, true}}, writeReview)
            .alsoBy({"scan"})
            .when(hasClipsWhileIdle)
            .inMenu(Menu::file, 310),
        Command::later("applyReview", "Apply Review Table…",
                       "Applies the decisions of a review table; says which of its lines it could not use.",
                       {{"path", path}}, applyReviewFile)
            .alsoBy({"sync"})
            .undoneBy(steps::applyReview)
            .when(hasClipsWhileIdle)
            .inMenu(Menu::file, 320),
        Command::later("applySuggestions", "Apply Suggestions",
                       "Gives all clips, or those that are named, the recordings and offsets that their "
                       "doubts suggest; not those with a lock or an offset of the editor.",
                       {{.name = "groupIDs", .kind = texts, .isOptional = true}}, applySuggestions)
            .undoneBy(steps::applySuggestions)
            .when(hasClipsWhileIdle),
        Command::later("applySoundOffset", "Move Sound for These Clips",
                       "Gives those of the clips that have no sound the recordings that meet them with this "
                       "sound offset, and moves these recordings there; names the clips that stay without.",
                       {{.name = "groupIDs", .kind = texts}, {"soundOffset", text}}, applySoundOffset)
            .undoneBy(steps::applySuggestions)
            .when(hasClipsWhileIdle),
        Command("chooseFirst", "Choose First Recordings",
                "Settles every ambiguous clip by the recording that it lists first.", {},
                [](CommandContext& context, const Call&) {
                    if (hasAmbiguous(context))
                        context.controller->withUndo(steps::confirmAmbiguousMatch, [&] {
                            context.controller->recordings().confirmAllAmbiguousMatches();
                        });
                    return JSON();
                })
            .alsoBy({"sync"})
            .undoneBy(steps::confirmAmbiguousMatch)
            .when(hasAmbiguous),
        Command("setTrimMode", steps::setTrimMode.actionName,
                "Changes the length of the clips of the document, as the setting trimMode does.",
                {{.name = "mode", .kind = text, .choices = RawValues<TrimMode>::texts}},
                [](CommandContext& context, const Call& call) {
                    const TrimMode mode = fromRawValue<TrimMode>(call.text("mode")).value();
                    const auto& store = *context.controller->work().environment.settings;
                    if (store.get(settings::trimMode) != mode)
                        context.controller->changeSetting(steps::setTrimMode, settings::trimMode, mode);
                    return JSON();
                })
            .undoneBy(steps::setTrimMode),
        Command(
            "chooseRecording", steps::chooseRecording.actionName,
            "Settles the clip by one of its recordings, which then comes first.", {groupID, {"matchID", id}},
            [](CommandContext& context, const Call& call) {
                context.controller->withUndo(steps::chooseRecording, [&] {
                    context.controller->recordings().chooseRecording(call.id("groupID"), call.id("matchID"));
                });
                return JSON();
            })
            .undoneBy(steps::chooseRecording)
            .forClips(hasUnlockedSound),
    };
}

} // namespace orvane::commands
