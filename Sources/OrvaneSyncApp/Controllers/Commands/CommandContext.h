#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Command.h"
#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/LockitOAuthService.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

namespace orvane::platform {
class PlayerSystem;
}
namespace orvane {
class ReviewViewModel;
}

namespace orvane::commands {

class ReviewPlayers;

/// What the commands work on.
class CommandContext {
  public:
    std::shared_ptr<ImportController> controller;
    std::shared_ptr<SessionManager> sessions;
    std::shared_ptr<platform::SettingsStore> settings;
    /// Stops the request of that identifier, and says whether there was one. Null where there are no
    /// requests.
    std::function<bool(const platform::JSON& id)> cancelRequest;

    /// Opens what plays pictures and sound; null: nothing can be played.
    std::function<std::shared_ptr<platform::PlayerSystem>()> openPlayers;
    /// Whether a preview of the clip in view is rendered by itself. Where requests alone decide what is done,
    /// what is heard must not depend on when a rendering happens to be ready.
    bool rendersPreviews = true;

    /// Shows a page to the user for signing in, and says whether it could; on a thread that waits.
    std::function<bool(const std::string& url)> showPage = platform::BrowserSession::openInDesktop;

    /// Begins to read them when they are first asked for.
    const std::shared_ptr<ShortcutCenter>& shortcuts();
    /// Of LockitNetwork; begins to look up who is signed in when it is first asked for.
    const std::shared_ptr<LockitOAuthService>& account();
    ReviewPlayers& players();
    ReviewViewModel& review();
    /// What a key of the review decides about a clip, by the row of the table.
    void decideOfClip(ShortcutAction key, const UUID& clip);
    const std::shared_ptr<platform::MainThread>& mainThread() const;

    /// Throws for a clip, recording, range or wild track that a call names and that is not there: before the
    /// call has done anything, so that there is nothing to take back.
    void expectKnown(const Call& call) const;
    /// Runs an edit as an undo step. The task is that of the analysis which the edit sets off.
    platform::Task withUndo(const UndoStep& step, const std::function<platform::Task()>& edit) const;
    /// Throws GroupNotFound.
    const SyncGroup& group(const UUID& id) const;

  private:
    std::shared_ptr<ShortcutCenter> shortcuts_;
    std::shared_ptr<ReviewPlayers> players_;
    std::shared_ptr<LockitOAuthService> account_;
};

/// Runs an operation; what it refuses is a mistake in the request of that name.
template <class Edit>
auto checked(std::string_view id, const Edit& run) {
    try {
        return run();
    } catch (const OutOfRange& refused) {
        throw Error(Refusal::invalidArguments, std::string(id) + ": " + refused.what());
    }
}

/// The modifier keys that the call names. Throws Error for one that there is not.
ModifierSet modifiersOf(const Call& call);

/// The controller of a topic of the work.
template <class Topic>
Topic& topic(ImportController& controller) {
    if constexpr (std::is_same_v<Topic, ClipEditing>)
        return controller.clips();
    else if constexpr (std::is_same_v<Topic, RecordingEditing>)
        return controller.recordings();
    else if constexpr (std::is_same_v<Topic, ReportController>)
        return controller.reports();
    else {
        static_assert(std::is_same_v<Topic, TrackEditing>, "a topic that rows run is named here");
        return controller.tracks();
    }
}

} // namespace orvane::commands
