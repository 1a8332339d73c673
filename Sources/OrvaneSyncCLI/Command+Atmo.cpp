#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/RoomTone.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

namespace orvane::cli {

namespace {

std::string candidatesText(const AtmoController::Candidates& candidates, bool bold) {
    Table table({{"SCENE"},
                 {"FILE"},
                 {"CHANNEL", Table::Align::right},
                 {"START", Table::Align::right},
                 {"LENGTH", Table::Align::right},
                 {"LEVEL", Table::Align::right}});
    for (const auto& [scene, found] : candidates)
        for (const AtmoCandidate& one : found)
            table.add({scene, one.url.lastPathComponent(), std::to_string(one.channelIndex + 1),
                       fineClockText(static_cast<double>(one.startSample) / one.sampleRate),
                       formatted("%.1fs", one.durationSeconds()), formatted("%.1f dBFS", one.rmsDBFS())});
    return table.text(bold);
}

[[noreturn]] void failWithoutScene(const AtmoController::Candidates& candidates, const std::string& scene) {
    std::string known;
    for (const auto& [key, found] : candidates) known += (known.empty() ? "" : ", ") + key;
    throw CommandError("no matched clip is of scene '" + scene + "'" +
                       (known.empty() ? "" : "; there are " + known));
}

void list(Context& context, const Arguments& arguments, AtmoController::Candidates candidates) {
    if (const auto scene = arguments.value("--scene"))
        std::erase_if(candidates, [&](const auto& one) { return one.first != *scene; });
    if (arguments.has("--json")) {
        context.out << candidatesJSON(candidates).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    const bool isEmpty = std::ranges::all_of(candidates, [](const auto& one) { return one.second.empty(); });
    if (isEmpty)
        context.out << "Threshold is −60 dBFS for ≥ 2.5 s of stable, transient-free audio. Match some clips "
                       "first; if there's literally no quiet long enough, the algorithm finds nothing.\n";
    else
        context.out << candidatesText(candidates, context.mayColour);
}

void tell(Context& context, const RoomTone& roomTone, bool asJSON) {
    if (asJSON) {
        JSON::Array built;
        for (const AtmoResult& result : roomTone.built) built.push_back(toJSON(result));
        context.out << JSON(std::move(built)).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    Table table({{"SCENE"}, {"LENGTH", Table::Align::right}, {"FILE"}});
    for (const AtmoResult& result : roomTone.built)
        table.add({result.sceneName, formatted("%.1fs", result.durationSeconds),
                   platform::text::printable(result.audioURL.path)});
    context.out << table.text(context.mayColour);
}

void atmo(Context& context, const Arguments& arguments) {
    RoomToneOrder order{.scene = arguments.value("--scene"), .directory = arguments.value("--output")};
    order.seconds = arguments.number("--duration").value_or(order.seconds);
    constexpr double longest = 3600;
    if (order.seconds < 1 || order.seconds > longest)
        throw UsageError("--duration must be 1 to 3600 seconds");
    if (order.directory && order.directory->empty()) throw UsageError("-o needs the name of a folder");
    ScanRun run(context, arguments);
    run.scan(ScanRun::Analysis::none);
    AtmoController& controller = run.controller().atmo();
    run.wait(controller.scanAtmoCandidates());
    if (order.scene && !controller.candidates()->contains(*order.scene))
        failWithoutScene(*controller.candidates(), *order.scene);
    if (arguments.has("--list")) {
        run.clearProgress();
        return list(context, arguments, *controller.candidates());
    }
    const RoomTone roomTone = buildRoomTone(run, order);
    run.clearProgress();
    if (roomTone.built.empty())
        throw CommandError(roomTone.problems.empty() ? "no clip is matched, so there is no room tone"
                                                     : roomTone.problems.front());
    tell(context, roomTone, arguments.has("--json"));
    for (const std::string& problem : roomTone.problems) context.warn(problem);
}

std::vector<Option> roomToneOptions() {
    std::vector<Option> all{
        {"--scene", "KEY", "of this scene alone: the letters and digits that its number begins with"},
        {"--duration", "S", "seconds of a scene's room tone, about (default: 60)"},
        {"--list", "", "show the quiet stretches and write nothing"},
        {"--output", "DIR", "the folder to write to (default: one of the application's own)", "-o"}};
    all.insert(all.end(), scanOptions().begin(), scanOptions().end());
    return all;
}

} // namespace

const Command& atmoCommand() {
    static const Command command{"atmo",
                                 "FOLDER... [options]",
                                 "Build room tone of each scene from the quiet stretches of its recordings.",
                                 "orvanesync atmo demo/shoot --list",
                                 roomToneOptions(),
                                 atmo};
    return command;
}

} // namespace orvane::cli
