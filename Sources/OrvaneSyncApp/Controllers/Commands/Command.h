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

/// One command of the program, as menus, keys, the JSON-RPC methods and the guide of these know it. Interface
/// thread; what it throws is the caller's answer.
struct Command {
    using Now = std::function<JSON(CommandContext&, const Call&)>;
    /// Leaves what it gives in `result` when it ends.
    using Later = std::function<platform::Task(CommandContext&, Call, std::shared_ptr<JSON> result)>;
    using Enabled = std::function<bool(const CommandContext&)>;
    using Applies = bool (*)(const SyncGroup&);
    using Replaces = bool (*)(const CommandContext&, const Call&);

    Command(std::string_view theID, std::string_view theTitle, std::string_view theHelp,
            std::vector<Parameter> theParameters, Now run)
        : id(theID), title(theTitle), help(theHelp), parameters(std::move(theParameters)),
          now(std::move(run)) {}
    /// Does what a key can do: it is called and described as that action.
    Command(std::string_view theID, ShortcutAction theAction, std::vector<Parameter> theParameters, Now run)
        : Command(theID, label(theAction), helpText(theAction), std::move(theParameters), std::move(run)) {
        action = theAction;
    }
    static Command later(std::string_view id, std::string_view title, std::string_view help,
                         std::vector<Parameter> parameters, Later run);
    static Command later(std::string_view id, ShortcutAction action, std::vector<Parameter> parameters,
                         Later run);

    // What else a row of the table says.
    Command undoneBy(const UndoStep& itsStep) &&;
    Command when(Enabled isEnabledNow) &&;
    Command forClips(Applies appliesToClip) &&;
    Command servedAtOnce() &&;
    Command endedByOtherWork() &&;
    Command otherWork(Replaces replacesTheWork = nullptr) &&;
    Command inMenu(Menu menu, int order, std::string_view key = {}) &&;
    /// Commands of the command line that do the same.
    Command alsoBy(std::initializer_list<std::string_view> commands) &&;

    /// Whether it can do anything as the work stands: to this clip, or without one, to any.
    bool isEnabled(const CommandContext& context, const SyncGroup* clip = nullptr) const;
    bool isOfOneClip() const;
    /// Such as "setFolders {videoFolder?, audioFolder?}".
    std::string signature() const;

    std::string_view id;    ///< also the name of the method
    std::string_view title; ///< as a menu shows it
    std::string_view help;  ///< a sentence
    std::optional<UndoStep> step;
    std::vector<Parameter> parameters;
    Now now;                   ///< answers at once; null for a long one
    Later whenDone;            ///< answers when it is done
    Enabled enabled;           ///< null: always
    Applies applies = nullptr; ///< of a command for one clip; null: to every one
    /// Is about an operation that others wait for: where calls are served in turn, this one is not held up.
    bool isServedAtOnce = false;
    /// An analysis, of use for the open work alone: where calls are served in turn, it is stopped when only
    /// such ones stand between it and one that `isOtherWork`.
    bool isEndedByOtherWork = false;
    bool isOtherWork = false;
    Replaces replaces = nullptr;    ///< whether a call of other work does put it in place; null: each does
    std::optional<MenuPlace> entry; ///< nothing: it is in no menu
    /// What a key of the user's choice can do by this command.
    std::optional<ShortcutAction> action;
    /// Of the command line, whose help shows this one.
    std::vector<std::string_view> counterparts;
};

} // namespace orvane::commands
