#include "OrvaneSyncApp/Controllers/SystemChecks.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Table.h"
#include "Platform/JSON.h"

#include <utility>

namespace orvane::cli {

namespace {

using platform::JSON;

void doctor(Context& context, const Arguments& arguments) {
    if (!arguments.positionals().empty()) throw UsageError("doctor takes no file");
    const auto found = systemChecks(*context.settings, context.openProbeCache);
    if (arguments.has("--json")) {
        JSON::Array list;
        for (const SystemCheck& check : found)
            list.push_back(
                JSON::Object{{"name", check.name}, {"status", check.status}, {"detail", check.detail}});
        JSON json;
        json.set("version", ORVANE_VERSION);
        json.set("checks", std::move(list));
        context.out << json.dump(JSON::Layout::pretty) << "\n";
        return;
    }
    Table table({{"CHECK"}, {"STATUS"}, {"DETAIL"}});
    for (const SystemCheck& check : found) table.add({check.name, check.status, check.detail});
    context.out << "orvanesync " ORVANE_VERSION "\n\n" << table.text(context.mayColour);
}

} // namespace

const Command& doctorCommand() {
    static const Command command{"doctor",
                                 "[options]",
                                 "Show which libraries and devices are available, and where the files are.",
                                 "orvanesync doctor",
                                 {},
                                 doctor};
    return command;
}

} // namespace orvane::cli
