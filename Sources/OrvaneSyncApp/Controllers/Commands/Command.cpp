#include "OrvaneSyncApp/Controllers/Commands/Command.h"

#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace orvane::commands {

Command Command::later(std::string_view id, std::string_view title, std::string_view help,
                       std::vector<Parameter> parameters, Later run) {
    Command command(id, title, help, std::move(parameters), nullptr);
    command.whenDone = std::move(run);
    return command;
}

Command Command::later(std::string_view id, ShortcutAction action, std::vector<Parameter> parameters,
                       Later run) {
    Command command(id, action, std::move(parameters), nullptr);
    command.whenDone = std::move(run);
    return command;
}

Command Command::undoneBy(const UndoStep& itsStep) && {
    step = itsStep;
    return std::move(*this);
}

Command Command::when(Enabled isEnabledNow) && {
    enabled = std::move(isEnabledNow);
    return std::move(*this);
}

Command Command::forClips(Applies appliesToClip) && {
    applies = appliesToClip;
    return std::move(*this);
}

Command Command::titled(TitleOf titleOfClip) && {
    titleOf = titleOfClip;
    return std::move(*this);
}

Command Command::servedAtOnce() && {
    isServedAtOnce = true;
    return std::move(*this);
}

Command Command::endedByOtherWork() && {
    isEndedByOtherWork = true;
    return std::move(*this);
}

Command Command::otherWork(Replaces replacesTheWork) && {
    isOtherWork = true;
    replaces = replacesTheWork;
    return std::move(*this);
}

Command Command::inMenu(Menu menu, int order, std::string_view key) && {
    entry = MenuPlace{menu, order, key};
    return std::move(*this);
}

Command Command::alsoBy(std::initializer_list<std::string_view> commands) && {
    counterparts = commands;
    return std::move(*this);
}

std::string_view Command::titleFor(const SyncGroup* clip) const {
    const std::string_view own = clip != nullptr && titleOf != nullptr ? titleOf(*clip) : std::string_view();
    return own.empty() ? title : own;
}

bool Command::isOfOneClip() const {
    return std::ranges::any_of(parameters, [](const Parameter& parameter) {
        return parameter.kind == Parameter::Kind::id && !parameter.isOptional &&
               (parameter.name == "groupID" || parameter.name == "of");
    });
}

bool Command::isEnabled(const CommandContext& context, const SyncGroup* clip) const {
    if (enabled && !enabled(context)) return false;
    if (!isOfOneClip()) return true;
    const auto canDo = [this](const SyncGroup& group) { return applies == nullptr || applies(group); };
    return clip != nullptr ? canDo(*clip)
                           : std::ranges::any_of(context.controller->work().syncGroups(), canDo);
}

std::string Command::signature() const {
    std::string text(id);
    for (const Parameter& parameter : parameters)
        text.append(&parameter == &parameters.front() ? " {" : ", ")
            .append(parameter.name)
            .append(parameter.isOptional ? "?" : "");
    return parameters.empty() ? text : text + "}";
}

} // namespace orvane::commands
