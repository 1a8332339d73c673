#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"

namespace orvane::cli {

namespace {

void show(const Context& context, bool asJSON) {
    const CacheReport report = cacheReport(*context.settings);
    if (asJSON) {
        context.out << toJSON(report).dump(platform::JSON::Layout::pretty) << "\n";
        return;
    }
    Table table({{"CACHE"}, {"FILES", Table::Align::right}, {"SIZE", Table::Align::right}, {"FOLDER"}});
    for (const CacheFolder& folder : report.folders)
        table.add({folder.name, std::to_string(folder.files), megabytesText(folder.bytes), folder.path});
    context.out << table.text(context.mayColour) << "Rendered sound takes "
                << megabytesText(static_cast<double>(report.renderedBytes))
                << formatted(" of the %g GB that it may.\n", report.limitGB);
}

void caches(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const std::string verb = words.empty() ? "show" : words.front();
    if (words.size() > 1 || (verb != "show" && verb != "clear"))
        throw UsageError("caches must be followed by show or clear, not '" + words.back() + "'");
    if (verb == "show") return show(context, arguments.has("--json"));
    const std::int64_t bytes = AppStorageHelper::clearDiskCaches();
    if (arguments.has("--json")) {
        platform::JSON json;
        json.set("removedBytes", bytes);
        context.out << json.dump(platform::JSON::Layout::pretty) << "\n";
    } else {
        context.out << "Removed " << megabytesText(bytes) << ".\n";
    }
}

} // namespace

const Command& cachesCommand() {
    static const Command command{"caches",
                                 "[show | clear] [options]",
                                 "Show what the caches hold, or remove it; all of it can be made again.",
                                 "orvanesync caches show",
                                 {},
                                 caches};
    return command;
}

} // namespace orvane::cli
