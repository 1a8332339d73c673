#pragma once

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "Platform/MainThread.h"

#include <QString>

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

namespace orvane::views {

QString text(std::string_view utf8);
std::string utf8(const QString& text);

/// The open work and its sessions as the windows use them: every action of a menu, a button or a key is a
/// command of the table. Interface thread.
class Desktop {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings;
        std::shared_ptr<ProbeCache> probeCache;
        std::shared_ptr<WaveformCache> waveformCache;
        /// Null: no sound is rendered for the player.
        std::shared_ptr<const RenderedAudioStore> renderedAudio = nullptr;
        std::shared_ptr<StemCache> stems = nullptr; ///< null: recordings are analysed without stems
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
        std::string sessionsDir{}; ///< empty: the user account's
        /// What plays pictures and sound; null: nothing can be played.
        commands::ReviewPlayers::OpenPlayers openPlayers = nullptr;
    };
    explicit Desktop(Dependencies dependencies);

    ImportController& controller() { return *context_.controller; }
    SessionManager& sessions() { return *context_.sessions; }
    const std::shared_ptr<ImportController>& sharedController() const { return context_.controller; }
    platform::SettingsStore& settings() { return *context_.settings; }
    const std::shared_ptr<platform::MainThread>& mainThread() const { return mainThread_; }
    /// The players, the keyboard and the models of the screens that play.
    commands::ReviewPlayers& players() { return context_.players(); }
    /// For what a screen asks of an account, of shortcuts or of the table.
    commands::CommandContext& context() { return context_; }

    /// Must be in the table.
    const commands::Command& command(std::string_view id) const;
    bool isEnabled(std::string_view id, const SyncGroup* clip = nullptr) const;
    using Done = std::function<void(const JSON& answer)>;
    using Refused = std::function<void(const QString& why)>;
    /// What the command answers goes to `done`, why it did not run to `refused`, or where there is none to
    /// `whenRefused`. A command that was stopped calls none of them. Gives what goes on behind a long one; it
    /// has ended for one that answered at once or was refused.
    platform::Task run(std::string_view id, JSON arguments = {}, Done done = {}, Refused refused = {});
    /// One command for several clips, as one step to take back where it is one. `done` is called once, when
    /// it has answered for each clip that it may be run for; not where one was refused or stopped.
    void runForClips(std::string_view id, const std::vector<UUID>& groupIDs, JSON arguments = {},
                     const std::function<void()>& done = {});
    /// A sentence for people.
    Refused whenRefused;
    /// Why a key or a drag does nothing now: a sentence that goes by itself and moves nothing on the screen.
    Refused tellBriefly;
    void sayWhyNot(const QString& why) const {
        if (tellBriefly) tellBriefly(why);
    }
    /// The window scans the folders of the work, as what was just corrected concerns the match. Whoever wants
    /// a scan asks by this, so that it is shown while it runs and what it takes away is said.
    std::function<void()> whenScanWanted;

  private:
    const std::shared_ptr<platform::MainThread> mainThread_;
    commands::CommandContext context_;
};

} // namespace orvane::views
