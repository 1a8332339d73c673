#pragma once

#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/Commands/ReviewPlayers.h"
#include "OrvaneSyncApp/Controllers/Commands/UnsavedWork.h"
#include "Platform/BrowserSession.h"
#include "Platform/MainThread.h"

#include <QString>
#include <QUrl>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::views {

QString text(std::string_view utf8);
std::string utf8(const QString& text);

/// The open work and its sessions, as the windows use them. Every action of a menu, a button or a key is a
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
        std::shared_ptr<StemCache> stems = nullptr;        ///< null: recordings are analysed without stems
        std::shared_ptr<AnalysisCache> analyses = nullptr; ///< null: analyses are not stored
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
        std::string sessionsDir{}; ///< empty: the folder of the user account
        /// Opens the players of picture and sound; null: nothing can be played.
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
    /// For screens that need an account, shortcuts or the table of commands.
    commands::CommandContext& context() { return context_; }

    /// The command must be in the table.
    const commands::Command& command(std::string_view id) const;
    bool isEnabled(std::string_view id, const SyncGroup* clip = nullptr) const;
    /// The title of the command for these clips.
    QString title(std::string_view id, const std::vector<UUID>& clips) const;
    using Done = std::function<void(const JSON& answer)>;
    using Refused = std::function<void(const QString& why)>;
    /// The answer of the command is passed to `done`; if it did not run, the reason is passed to `refused`,
    /// or to `whenRefused` if that is empty. Neither is called for a command that was stopped. Returns the
    /// task of a long command; for a command that answered at once or was refused, a task that has ended.
    platform::Task run(std::string_view id, JSON arguments = {}, Done done = {}, Refused refused = {});
    /// Runs an operation that replaces the open work, once its changes are saved or the user agrees to leave
    /// them; else it counts as stopped.
    platform::Task leaveFor(std::function<platform::Task()> open);
    /// Runs the command for each of the clips for which it is enabled, as one undo step if it has an undo
    /// step. `done` is called once, after all have answered; it is not called if one was refused or stopped.
    void runForClips(std::string_view id, const std::vector<UUID>& groupIDs, JSON arguments = {},
                     const std::function<void()>& done = {});
    /// Gets a sentence for the user.
    Refused whenRefused;
    /// Opens a page, a file or a folder in the program that the desktop has for it, from another thread. If
    /// there is none, the reason is passed to `refused`, or to `whenRefused` if that is empty; to neither if
    /// `context` was destroyed before.
    void openOutside(QObject* context, const QUrl& address, Refused refused = {});
    /// Opens an address in a program of the desktop, and returns whether it could; called on a thread that
    /// may block.
    std::function<bool(const std::string& address)> openAddress = platform::BrowserSession::openInDesktop;
    /// Asks the user whether to leave work that can't be saved. A command that would leave it then runs, or
    /// counts as stopped. Null: it is refused.
    std::function<bool(const commands::UnsavedWork&)> agreesToLeave;
    /// Gets a sentence on why a key or a drag does nothing at the moment. It disappears by itself and moves
    /// nothing on the screen.
    Refused showBriefly;
    void sayWhyNot(const QString& why) const {
        if (showBriefly) showBriefly(why);
    }
    /// Asks the window to scan the folders of the work, after a correction that changes the match. A scan is
    /// always started with this, so that its progress and what it removes are shown.
    std::function<void()> whenScanWanted;
    /// Asks the window to show the page on which the folders of a scan are chosen.
    std::function<void()> whenFoldersWanted;

  private:
    platform::Task askToLeave(const commands::Command& row, JSON arguments, std::shared_ptr<JSON> result);

    const std::shared_ptr<platform::MainThread> mainThread_;
    commands::CommandContext context_;
};

} // namespace orvane::views
