#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"

#include <memory>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

platform::Task list(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const platform::Task looking = controller->models().rebuildCatalog();
    co_await looking;
    *answer = modelsJSON(controller->models());
}

/// Waits for an operation on the model that the call names.
platform::Task onModel(platform::Task operation) {
    try {
        co_await operation;
    } catch (const ModelNotFound& unknown) {
        throw Error(Refusal::invalidArguments, std::string("id: ") + unknown.what());
    }
}

platform::Task download(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const std::string& id = call.text("id");
    const platform::Task downloading = onModel(controller->models().download(id));
    co_await downloading;
    const ModelInfo& model = *controller->models().model(id);
    if (model.status.kind == ModelStatus::Kind::error) throw Error(Refusal::failed, model.status.message);
    *answer = toJSON(model);
}

platform::Task remove(CommandContext& context, Call call, std::shared_ptr<JSON> /*answer*/) {
    const auto controller = context.controller;
    const platform::Task removing = onModel(controller->models().deleteModel(call.text("id")));
    co_await removing;
}

JSON cancelDownload(CommandContext& context, const Call& call) {
    context.controller->models().cancelDownload(call.text("id"));
    return {};
}

} // namespace

std::vector<Command> modelCommands() {
    return {
        Command::later("models", "Models", "Lists the optional models and which of them are installed.", {},
                       list)
            .alsoBy({"models"}),
        Command::later("downloadModel", "Download Model", "Downloads a model and tests it.", {{"id", text}},
                       download)
            .alsoBy({"models"}),
        Command("cancelModelDownload", "Cancel Download",
                "Stops the download of a model; the next download continues from there.", {{"id", text}},
                cancelDownload)
            .alsoBy({"models"})
            .servedAtOnce(),
        Command::later("deleteModel", "Delete Model", "Removes a downloaded model.", {{"id", text}}, remove)
            .alsoBy({"models"}),
    };
}

} // namespace orvane::commands
