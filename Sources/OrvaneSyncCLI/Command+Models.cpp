#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/Table.h"

#include <cmath>

namespace orvane::cli {

namespace {

using Kind = ModelStatus::Kind;

std::string statusText(const ModelStatus& status) {
    switch (status.kind) {
    case Kind::notDownloaded:
        return "Not downloaded";
    case Kind::downloading:
        return "Downloading";
    case Kind::ready:
        return "Ready";
    case Kind::error:
        break;
    }
    return status.message;
}

void print(Context& context, const ModelManager& models, bool asJSON) {
    if (asJSON) {
        context.out << modelsJSON(models).dump(platform::JSON::Layout::pretty) << "\n";
        return;
    }
    Table table({{"ID"}, {"NAME"}, {"SIZE", Table::Align::right}, {"USE"}, {"STATUS"}});
    for (const ModelInfo& model : models.models())
        table.add({model.id, model.name, model.size, model.isWired ? "" : "Not active yet",
                   statusText(model.status)});
    context.out << table.text(context.mayColour) << "Disk usage: " << models.totalSizeMB() << " MiB\n"
                << (models.bandit().hasModel ? "BanditV2.onnx installed" : "BanditV2.onnx not installed")
                << " (" << models.bandit().modelPath << ")\n";
    if (models.bandit().hasModel && !models.bandit().problem.empty())
        context.out << models.bandit().problem << "\n";
}

void download(Context& context, bool isQuiet, ModelManager& models, ImportController& controller,
              platform::RunLoop& loop, const std::string& id) {
    ProgressLine progress(context, isQuiet);
    const auto subscription = controller.onChange([&](ImportField field) {
        constexpr double percent = 100;
        const ModelInfo* const model = models.model(id);
        if (field != ImportField::models || model == nullptr || model->status.kind != Kind::downloading)
            return;
        const double share = model->status.progress;
        progress.show({"Downloading " + model->name, static_cast<int>(std::floor(share * percent)), 100},
                      share);
    });
    runUntilDone(loop, models.download(id));
    progress.clear();
    const ModelStatus& status = models.model(id)->status;
    if (status.kind == Kind::error) throw CommandError(status.message);
}

void models(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const std::string verb = words.empty() ? "list" : words.front();
    if (verb != "list" && verb != "download" && verb != "delete")
        throw UsageError("models must be followed by list, download or delete, not '" + verb + "'");
    if (verb == "list" ? words.size() > 1 : words.size() != 2)
        throw UsageError("models " + verb + (verb == "list" ? " takes no model" : " takes one model"));
    const auto loop = platform::RunLoop::create();
    ImportController::Dependencies dependencies;
    dependencies.mainThread = loop;
    dependencies.settings = context.settings;
    dependencies.clock = context.clock;
    const auto controller = ImportController::create(std::move(dependencies));
    ModelManager& manager = controller->models();
    try {
        if (verb == "list")
            runUntilDone(*loop, manager.rebuildCatalog());
        else if (verb == "delete")
            runUntilDone(*loop, manager.deleteModel(words[1]));
        else
            download(context, arguments.has("--quiet"), manager, *controller, *loop, words[1]);
    } catch (const ModelNotFound& unknown) {
        throw CommandError(std::string(unknown.what()) + "; 'orvanesync models list' has them all");
    }
    print(context, manager, arguments.has("--json"));
}

} // namespace

const Command& modelsCommand() {
    static const Command command{"models",
                                 "[list | download ID | delete ID] [options]",
                                 "List the optional models, download or delete one.",
                                 "orvanesync models list",
                                 {},
                                 models};
    return command;
}

} // namespace orvane::cli
