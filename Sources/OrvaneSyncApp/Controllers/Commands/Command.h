#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Call.h"
#include "OrvaneSyncApp/Controllers/Commands/MenuPlace.h"
#include "OrvaneSyncApp/Controllers/UndoStep.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutAction.h"
#include "Platform/JSON.h"
#include "Platform/Task.h"

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::commands {

class CommandContext;

/// One command of the program. Menus, keys, the help and the JSON-RPC methods all use it.
/// Interface thread; what it throws is the answer to the caller.
struct Command {
    using Now = std::function<JSON(CommandContext&, const Call&)>;
    /// Writes its answer to `result` before it ends.
    using Later = std::function<platform::Task(CommandContext&, Call, std::shared_ptr<JSON> result)>;
    using Enabled = std::function<bool(const CommandContext&)>;
    using Applies = bool (*)(const SyncGroup&);
    using TitleOf = std::string_view (*)(const SyncGroup&);
    using Replaces = bool (*)(const CommandContext&, const Call&);

    Command(std::string_view theID, std::string_view theTitle, std::string_view theHelp,
            std::vector<Parameter> theParameters, Now run)
        : id(theID), title(theTitle), help(theHelp), parameters(std::move(theParameters)),
          now(std::move(run)) {}
    /// For the action of a key: the command has the identifier and the description of that action.
    Command(std::string_view theID, ShortcutAction theAction, std::vector<Parameter> theParameters, Now run)
        : Command(theID, label(theAction), helpText(theAction), std::move(theParameters), std::move(run)) {
        action = theAction;
    }
    static Command later(std::string_view id, std::string_view title, std::string_view help,
                         std::vector<Parameter> parameters, Later run);
    static Command later(std::string_view id, ShortcutAction action, std::vector<Parameter> parameters,
                         Later run);

    // Further columns of the row in the table.
    Command undoneBy(const UndoStep& itsStep) &&;
    Command when(Enabled isEnabledNow) &&;
    Command forClips(Applies appliesToClip) &&;
    Command titled(TitleOf titleOfClip) &&;
    Command servedAtOnce() &&;
    Command endedByOtherWork() &&;
    Command otherWork(Replaces replacesTheWork = nullptr) &&;
    Command inMenu(Menu menu, int order, std::string_view key = {}) &&;
    /// Commands of the command line with the same function.
    Command alsoBy(std::initializer_list<std::string_view> commands) &&;

    /// Whether it can have an effect on the work as it is: on this clip, or without a clip, on any.
    bool isEnabled(const CommandContext& context, const SyncGroup* clip = nullptr) const;
    bool isOfOneClip() const;
    /// The title for this clip alone; null: for any clip, or for several.
    std::string_view titleFor(const SyncGroup* clip) const;
    /// Such as "setFolders {videoFolder?, audioFolder?}".
    std::string signature() const;

    std::string_view id;    ///< also the name of the method
    std::string_view title; ///< as a menu shows it
    std::string_view help;  ///< one sentence
    std::optional<UndoStep> step;
    std::vector<Parameter> parameters;
    Now now;                   ///< answers at once; null for a long command
    Later whenDone;            ///< answers when its task ends
    Enabled enabled;           ///< null: always
    Applies applies = nullptr; ///< for a command on one clip; null: it applies to every clip
    TitleOf titleOf = nullptr; ///< for a command that does different things to a single clip; empty: `title`
    /// Controls an operation that other calls wait for: where calls are served in order, this one is served
    /// before them.
    bool isServedAtOnce = false;
    /// An analysis whose result is of use only to the open work. Where calls are served in order, it is
    /// stopped when only such analyses are between it and a call that is `isOtherWork`.
    bool isEndedByOtherWork = false;
    bool isOtherWork = false;
    Replaces replaces = nullptr;    ///< whether a call replaces the open work; null: every call
    std::optional<MenuPlace> entry; ///< absent: it is in no menu
    /// The action that the user can assign a key to.
    std::optional<ShortcutAction> action;
    /// Commands of the command line whose help shows this one.
    std::vector<std::string_view> counterparts;
};

} // namespace orvane::commands
