#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/Conditions.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/OnQueue.h"

#include <memory>
#include <optional>

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

RenderedAudioController& rendered(CommandContext& context) {
    return context.controller->smartAudio().rendered();
}

platform::Task renderMixdown(CommandContext& context, Call call, std::shared_ptr<JSON> answer) {
    const auto result = std::make_shared<std::optional<RenderResult>>();
    const platform::Task rendering = rendered(context).renderMixdown(call.id("groupID"), result);
    co_await rendering;
    if (*result) *answer = toJSON(**result);
}

platform::Task showCaches(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const OpenWork& work = context.controller->work();
    auto looking = platform::onQueue(*work.documents, work.environment.mainThread,
                                     [settings = context.settings] { return cacheReport(*settings); });
    *answer = toJSON(co_await looking);
}

platform::Task clearCaches(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> answer) {
    const auto controller = context.controller;
    const OpenWork& work = controller->work();
    auto clearing = platform::onQueue(*work.documents, work.environment.mainThread,
                                      [] { return AppStorageHelper::clearDiskCaches(); });
    const std::int64_t bytes = co_await clearing;
    controller->smartAudio().caches().removeAllRenderedAudio();
    answer->set("removedBytes", bytes);
}

} // namespace

std::vector<Command> renderedAudioCommands() {
    return {
        Command::later("renderMixdown", "Render Mixdown",
                       "Renders the mix that the analysis chose for the clip's sound.", {groupID},
                       renderMixdown)
            .alsoBy({"mixdown"})
            .forClips(hasSound),
        Command::later(
            "toggleSoloMonitor", "Solo in Player", "Plays one track of the clip's take alone, or ends that.",
            {groupID, {.name = "trackIndex", .kind = integer, .lowest = 1}},
            [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                return rendered(context).toggleSoloMonitor(call.id("groupID"), call.integer("trackIndex"));
            })
            .alsoBy({"solo"})
            .forClips(hasSound),
        Command::later("runVoiceIsolationForGroup", "Preview Voice Isolation",
                       "Renders the clip's sound as the effects of the project's preset change it.",
                       {groupID},
                       [](CommandContext& context, const Call& call, const std::shared_ptr<JSON>&) {
                           return rendered(context).runVoiceIsolationForGroup(call.id("groupID"));
                       })
            .alsoBy({"preview"})
            .forClips(hasSound),
        Command("playbackAudioURL", "Rendered Sound",
                "Gives the file that plays in the place of the clip's recording.", {groupID},
                [](CommandContext& context, const Call& call) {
                    const auto url = rendered(context).playbackAudioURL(call.id("groupID"));
                    return url ? JSON(url->absoluteString()) : JSON();
                })
            .alsoBy({"mixdown", "solo", "preview"})
            .forClips(hasSound),
        Command::later("caches", "Caches", "Gives the sizes of the caches and their limits.", {}, showCaches)
            .alsoBy({"caches"}),
        Command::later("clearCaches", "Clear Caches", "Removes all that can be made again.", {}, clearCaches)
            .alsoBy({"caches"}),
    };
}

} // namespace orvane::commands
