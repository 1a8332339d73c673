#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <set>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

platform::Task scanCandidates(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const platform::Task scanning = controller->atmo().scanAtmoCandidates();
    co_await scanning;
    if (const auto& found = controller->atmo().candidates()) *answer = candidatesJSON(*found);
}

/// The candidates that the call names, in the order in which they were found; all if it names none.
std::vector<AtmoCandidate> chosen(const Call& call, const std::vector<AtmoCandidate>& found) {
    if (!call.has("candidateIDs")) return found;
    const auto listed = call.texts("candidateIDs");
    std::set<std::string> wanted(listed.begin(), listed.end());
    std::vector<AtmoCandidate> taken;
    std::ranges::copy_if(found, std::back_inserter(taken),
                         [&](const AtmoCandidate& one) { return wanted.erase(one.id.text()) > 0; });
    if (!wanted.empty())
        throw Error(Refusal::invalidArguments, "candidateIDs: the scene has no stretch " + *wanted.begin() +
                                                   "; a new scan gives other identifiers");
    return taken;
}

platform::Task buildAtmo(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    if (!controller->atmo().candidates()) {
        const platform::Task scanning = controller->atmo().scanAtmoCandidates();
        co_await scanning;
    }
    AtmoController::Order order{.scene = call.text("scene"), .candidates = {}};
    const auto& found = controller->atmo().candidates();
    const auto ofScene = found->find(order.scene);
    if (ofScene == found->end())
        throw Error(Refusal::invalidArguments, "scene: no matched clip is of scene '" + order.scene + "'");
    order.candidates = chosen(call, ofScene->second);
    order.targetDuration = call.number("targetDuration");
    order.outputDirectory = call.textIfPresent("outputDirectory");
    const auto result = std::make_shared<AtmoResult>();
    const platform::Task building = controller->atmo().buildAtmo(std::move(order), result);
    co_await building;
    *answer = toJSON(*result);
}

} // namespace

std::vector<Command> atmoCommands() {
    return {
        Command::later("scanAtmoCandidates", "Find Room Tone",
                       "Finds the quiet stretches in the recordings of each scene.", {}, scanCandidates)
            .alsoBy({"atmo"})
            .when(hasSoundWhileIdle),
        Command::later("buildAtmo", "Build Room Tone…",
                       "Joins quiet stretches of a scene into a file that goes into the document.",
                       {{"scene", text},
                        {.name = "candidateIDs", .kind = texts, .isOptional = true},
                        {.name = "targetDuration", .kind = number, .lowest = 1, .highest = 3600},
                        {.name = "outputDirectory", .kind = path, .isOptional = true}},
                       buildAtmo)
            .alsoBy({"atmo"})
            .when(hasSoundWhileIdle)
            .inMenu(Menu::audio, 310),
    };
}

} // namespace orvane::commands
