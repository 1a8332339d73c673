#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkReview.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"

#include <algorithm>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

platform::Task writeReview(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const ImportController& controller = *context.controller;
    const std::vector<ReviewLine> lines = reviewLines(controller);
    const OutputPermission permission{call.has("overwrite") && call.boolean("overwrite"), "overwrite: true"};
    auto writing =
        platform::onQueue(*controller.work().documents, controller.work().environment.mainThread,
                          [lines, permission, output = call.text("output"), inputs = inputsOf(controller)] {
                              writeReviewFile(output, lines, inputs(), permission);
                          });
    co_await writing;
    JSON json;
    json.set("output", call.text("output"));
    json.set("clips", static_cast<int>(lines.size()));
    *answer = std::move(json);
}

platform::Task applyReviewFile(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const std::shared_ptr<ImportController> controller = context.controller;
    auto reading =
        platform::onQueue(*controller->work().documents, controller->work().environment.mainThread,
                          [path = readableFile(call.text("path")).path] { return readReviewFile(path); });
    const std::vector<ReviewLine> lines = co_await reading;
    const ReviewOutcome outcome = applyReview(*controller, lines);
    JSON::Array problems;
    for (const std::string& problem : outcome.problems) problems.emplace_back(problem);
    JSON json;
    json.set("changedClips", outcome.changedClips);
    json.set("warnings", std::move(problems));
    *answer = std::move(json);
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
            .when(hasClipsAtRest),
        Command::later(
            "applyReview", "Apply Review Table…",
            "Takes the decisions of a review table back; says which of its lines it could not use.",
            {{"path", path}}, applyReviewFile)
            .undoneBy(steps::applyReview)
            .when(hasClipsAtRest),
        Command("chooseFirst", "Choose First Recordings",
                "Settles every ambiguous clip by the recording that it lists first.", {},
                [](CommandContext& context, const Call&) {
                    if (hasAmbiguous(context))
                        context.controller->withUndo(steps::confirmAmbiguousMatch, [&] {
                            context.controller->recordings().confirmAllAmbiguousMatches();
                        });
                    return JSON();
                })
            .undoneBy(steps::confirmAmbiguousMatch)
            .when(hasAmbiguous),
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
