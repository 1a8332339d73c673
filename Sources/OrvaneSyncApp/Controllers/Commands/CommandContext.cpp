#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"

#include <algorithm>

namespace orvane::commands {

const std::shared_ptr<ShortcutCenter>& CommandContext::shortcuts() {
    if (!shortcuts_) shortcuts_ = ShortcutCenter::create({mainThread(), settings});
    return shortcuts_;
}

/// Runs the command that has this key of the review, if it is a command for a clip.
void CommandContext::decideOfClip(ShortcutAction key, const UUID& clip) {
    const Command* row = commandOf(key);
    if (row == nullptr || !row->isOfOneClip()) return;
    JSON arguments = JSON::object();
    arguments.set(row->parameters.front().name, clip.text());
    row->now(*this, Call(*row, &arguments));
}

ReviewPlayers& CommandContext::players() {
    if (!players_) {
        players_ = std::make_shared<ReviewPlayers>(controller, shortcuts(), openPlayers, rendersPreviews);
        players_->review()->decideOfClip = players_->multicam()->decideOfClip =
            [this](KeyAction key, const UUID& clip) { decideOfClip(key, clip); };
    }
    return *players_;
}

ReviewViewModel& CommandContext::review() { return *players().review(); }

const std::shared_ptr<platform::MainThread>& CommandContext::mainThread() const {
    return controller->work().environment.mainThread;
}

ModifierSet modifiersOf(const Call& call) {
    ModifierSet all;
    if (!call.has("modifiers")) return all;
    for (const std::string& name : call.texts("modifiers")) {
        const auto modifier = modifierNamed(name);
        if (!modifier)
            throw Error(Refusal::invalidArguments,
                        "modifiers: there is no key '" + name + "'; command, shift, option and control are");
        all = all | *modifier;
    }
    return all;
}

const std::shared_ptr<LockitOAuthService>& CommandContext::account() {
    if (!account_) {
        const OpenWork::Environment& environment = controller->work().environment;
        account_ = LockitOAuthService::create(
            {.mainThread = environment.mainThread, .openPage = showPage, .clock = environment.clock});
    }
    return account_;
}

void CommandContext::expectKnown(const Call& call) const {
    const auto expect = [&](const auto& list, std::string_view name, const char* what) {
        if (call.names(name) &&
            std::ranges::none_of(list, [&](const auto& element) { return element.id == call.id(name); }))
            throw Error(Refusal::failed, std::string(what) + " not found");
    };
    if (call.names("id")) expect(controller->work().wildTracks(), "id", "Wild track");
    const char* const clip = call.names("of") ? "of" : "groupID";
    if (!call.names(clip)) return;
    const SyncGroup& known = group(call.id(clip));
    expect(known.audioMatches, "matchID", "Audio match");
    expect(known.manualBlockOverrides, "overrideID", "Range override");
}

platform::Task CommandContext::withUndo(const UndoStep& step,
                                        const std::function<platform::Task()>& edit) const {
    auto analysis = platform::Task::ended();
    controller->withUndo(step, [&] { analysis = edit(); });
    return analysis;
}

const SyncGroup& CommandContext::group(const UUID& id) const {
    if (const SyncGroup* group = controller->work().syncGroups().find(id)) return *group;
    throw GroupNotFound();
}

} // namespace orvane::commands
