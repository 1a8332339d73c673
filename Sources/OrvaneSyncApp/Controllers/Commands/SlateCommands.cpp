#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "Platform/OnQueue.h"
#include "Platform/TextRecognizer.h"

#include <algorithm>

namespace orvane::commands {

namespace {

JSON toJSON(const SlateProposal& proposal) {
    JSON json;
    json.setIfPresent("scene", proposal.scene);
    json.setIfPresent("take", proposal.take);
    json.setIfPresent("clipName", proposal.clipName);
    return json;
}

/// The result of the search, with the proposal made from it. Null if the clip was not searched.
JSON resultJSON(const CommandContext& context, const UUID& groupID) {
    const SlateController& slates = context.controller->slates();
    const SlateResult* result = slates.result(groupID);
    if (result == nullptr) return {};
    JSON json = orvane::toJSON(*result);
    if (const auto offered = slates.proposal(groupID)) json.set("proposal", toJSON(*offered));
    json.setIfPresent("problem", slates.problem(groupID));
    return json;
}

/// If this machine cannot recognise text, adds to the answer what is missing.
platform::Task addProblem(const CommandContext& context, std::shared_ptr<JSON> answer) {
    const OpenWork& work = context.controller->work();
    auto asking = platform::onQueue(*work.documents, work.environment.mainThread,
                                    [] { return platform::textRecognitionState(); });
    const platform::TextRecognitionState state = co_await asking;
    if (!state.isAvailable && answer->find("problem") == nullptr) answer->set("problem", state.description);
}

platform::Task detectSlate(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const UUID groupID = call.id("groupID");
    const platform::Task searching = context.controller->slates().detectSlate(groupID);
    co_await searching;
    *answer = resultJSON(context, groupID);
    if (answer->isNull()) co_return;
    const platform::Task problem = addProblem(context, answer);
    co_await problem;
}

platform::Task detectSlates(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const platform::Task searching = context.controller->slates().detectSlates();
    co_await searching;
    JSON::Array clips;
    for (const SyncGroup& group : context.controller->work().syncGroups()) {
        JSON one = resultJSON(context, group.id);
        if (one.isNull()) continue;
        one.set("groupID", group.id.text());
        clips.push_back(std::move(one));
    }
    *answer = JSON(JSON::Object{});
    answer->set("clips", std::move(clips));
    const platform::Task problem = addProblem(context, answer);
    co_await problem;
}

bool hasProposals(const CommandContext& context) {
    const ImportController& controller = *context.controller;
    const SyncGroupList& groups = controller.work().syncGroups();
    return std::any_of(groups.begin(), groups.end(), [&](const SyncGroup& group) {
        return controller.slates().proposal(group.id).has_value();
    });
}

} // namespace

std::vector<Command> slateCommands() {
    return {
        Command::later("detectSlate", "Detect Slate",
                       "Searches the clip for a clapper board: its clap, scene, take and roll.", {groupID},
                       detectSlate)
            .alsoBy({"slate"}),
        Command::later("detectSlates", "Detect Slates", "Searches all clips for their clapper boards.", {},
                       detectSlates)
            .alsoBy({"slate"})
            .when(hasClips),
        Command("slateResult", "Slate", "Gives what the last search found, and what is offered of it.",
                {groupID},
                [](CommandContext& context, const Call& call) {
                    return resultJSON(context, context.group(call.id("groupID")).id);
                })
            .alsoBy({"slate"}),
        Command("acceptSlate", undoSteps::acceptSlate.actionName,
                "Takes scene and take of the slate where neither recorder nor report has them.", {groupID},
                [](CommandContext& context, const Call& call) {
                    context.controller->slates().acceptSlate(call.id("groupID"));
                    return JSON();
                })
            .alsoBy({"slate"})
            .undoneBy(undoSteps::acceptSlate)
            .when(hasProposals),
        Command("acceptSlates", undoSteps::acceptSlates.actionName,
                "The same for all clips whose slate offers something.", {},
                [](CommandContext& context, const Call&) {
                    context.controller->slates().acceptSlates();
                    return JSON();
                })
            .alsoBy({"slate"})
            .undoneBy(undoSteps::acceptSlates)
            .when(hasProposals),
    };
}

} // namespace orvane::commands
