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
    /// Stops the request with that identifier, and returns whether there was one. Null in a front end without
    /// requests.
    std::function<bool(const platform::JSON& id)> cancelRequest;

    /// Opens the players of pictures and sound; null: nothing can be played.
    std::function<std::shared_ptr<platform::PlayerSystem>()> openPlayers;
    /// Whether a preview of the clip in view is rendered without a request. False in a front end that acts on
    /// requests only: there, the sound must not depend on when a rendering is ready.
    bool rendersPreviews = true;

    /// Whether people read the names of undo steps. They then say what was done ("Lock"), where programs
    /// expect the name of the operation ("Toggle Lock").
    bool isWindow = false;

    /// Whether the command that runs now is run for each of several clips, as one change.
    bool isForSeveralClips = false;

    /// Opens a page for signing in, and returns whether it could; called on a thread that may block.
    std::function<bool(const std::string& url)> showPage = platform::BrowserSession::openInDesktop;

    /// Starts reading them at the first call.
    const std::shared_ptr<ShortcutCenter>& shortcuts();
    /// The account at LockitNetwork; starts looking up who is signed in at the first call.
    const std::shared_ptr<LockitOAuthService>& account();
    ReviewPlayers& players();
    ReviewViewModel& review();
    /// Runs the command that this key of the review has for a clip.
    void decideOfClip(ShortcutAction key, const UUID& clip);
    const std::shared_ptr<platform::MainThread>& mainThread() const;

    /// Throws if a call names a clip, recording, range or wild track that does not exist. This is checked
    /// before the call has changed anything, so nothing has to be undone.
    void expectKnown(const Call& call) const;
    /// Runs an edit as an undo step. The returned task is that of the analysis that the edit starts.
    platform::Task withUndo(const UndoStep& step, const std::function<platform::Task()>& edit) const;
    /// Throws GroupNotFound.
    const SyncGroup& group(const UUID& id) const;

  private:
    std::shared_ptr<ShortcutCenter> shortcuts_;
    std::shared_ptr<ReviewPlayers> players_;
    std::shared_ptr<LockitOAuthService> account_;
};

/// Runs an operation; an error that it throws is reported as a mistake in the request of that name.
template <class Edit>
auto checked(std::string_view id, const Edit& run) {
    try {
        return run();
    } catch (const OutOfRange& refused) {
        throw Error(Refusal::invalidArguments, std::string(id) + ": " + refused.what());
    }
}

/// The modifier keys that the call names. Throws Error for an unknown one.
ModifierSet modifiersOf(const Call& call);

/// The controller of one topic of the work.
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
