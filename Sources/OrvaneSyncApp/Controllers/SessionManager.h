#pragma once

#include "OrvaneSyncApp/Controllers/Repeating.h"
#include "OrvaneSyncApp/Controllers/SessionAutosave.h"
#include "OrvaneSyncApp/Controllers/SessionPlaces.h"
#include "OrvaneSyncApp/Controllers/SessionStatus.h"
#include "OrvaneSyncApp/Controllers/SessionWrites.h"
#include "OrvaneSyncApp/Controllers/StoredSessions.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Keeps the open work: a session holds all clips with every edit, is saved in the background after every
/// change, and opens again at once. Sessions lie in named folders, which carry settings.
///
/// Interface thread, and asserts so. What is decided holds in memory at once; all reading and writing is done
/// on a queue of its own, in order, but that of the lists at its making. Destroying it waits for what is not
/// written yet: `flush` first, which keeps nobody waiting. Held by a shared pointer, as its background work
/// holds it weakly.
class SessionManager : public SessionStatus, public std::enable_shared_from_this<SessionManager> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings; ///< those that follow the work into its folder
        std::string sessionsDir{};                         ///< empty: the user account's
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
    };
    static std::shared_ptr<SessionManager> create(Dependencies dependencies);
    ~SessionManager();

    /// What the last writing of the session failed at.
    std::optional<std::string> saveError(const UUID& sessionId) const;
    SessionFolderList& folders() { return *folders_; }
    SessionPlaces& places() { return places_; }

    // Saving.

    /// Saves the open session in the background; the task ends when it is on the disk, a later save has taken
    /// its place, or it has failed (`lastSaveError`). Nothing without an open session. A name that is given
    /// stays; a session that nobody has named is named after its media folders.
    platform::Task save(const ImportController& controller, std::optional<std::string> name = std::nullopt);
    /// Gives work that is open without a session one of its own, which is saved; nothing where there is one,
    /// or no work.
    void beginSessionOfOpenWork(const ImportController& controller);
    /// From now on: saves after every change of clips, wild tracks or folders and every 5 seconds, watches
    /// the settings, sees within a second what another process changes of the lists, and gives a project that
    /// is opened a session of its own, after that of the work before was saved; work without a session that
    /// may hold decisions gets one first. A list without clips is saved
    /// only where the editor has emptied it. Once; later calls do nothing.
    void start(const std::shared_ptr<ImportController>& controller);
    /// The application is left, or comes back: saves; the timers rest in between.
    void resignActive();
    void becomeActive();
    /// Done when every save so far is on the disk or has failed, a change that was just made too. What failed
    /// before is tried again.
    platform::Task flush();

    // Opening.

    /// Reads the session's clips and then replaces the controller's work by them; the task ends when the
    /// work has them. Nothing when there is no such session. A session whose clips can't be read opens
    /// without any (`problem`), and their file is kept. A later call takes the place of one that still reads;
    /// one that is stopped leaves the work as it is.
    platform::Task load(UUID sessionId, const std::shared_ptr<ImportController>& controller);
    platform::Task loadMostRecentSession(std::shared_ptr<ImportController> controller);
    /// Empty work under a new id, saved at once. The task is that of `save`.
    platform::Task newSession(ImportController& controller);
    /// Goes back to empty work without a session. What was decided in the one that was open is saved there;
    /// nothing that comes later is.
    void close(ImportController& controller);
    /// Ends when the lists of sessions and folders are what the disk says, with what is not there yet.
    platform::Task loadSessionList();
    /// Leaves in `found` the session with clips, other than the open one, whose media lay in just these
    /// folders, of several the most recently modified; absent where there is none.
    platform::Task findSession(const std::vector<FileURL>& folders,
                               std::shared_ptr<std::optional<UUID>> found) const;

    // The tasks end as that of `save`.

    platform::Task rename(const UUID& sessionId, std::string name);
    /// Cannot be taken back. Of the open session the work goes too, as by `close`, once this has been
    /// started. Leaves in `wasThere` whether the disk had it, also one whose record can't be read. Throws
    /// FileError when it could not be deleted; all is as it was then.
    platform::Task deleteSession(UUID sessionId,
                                 std::shared_ptr<bool> wasThere = std::make_shared<bool>(false));

  private:
    class Reports;

    explicit SessionManager(Dependencies dependencies);

    void reportProblem();

    void adopt(SessionInfo info);
    platform::Task save(SessionWork work, std::optional<std::string> name, bool isChanged);
    platform::Task decide(const UUID& id, SessionInfoChange change);
    /// The session as it is shown, with the change, which is noted as unwritten.
    void change(const UUID& id, const SessionInfoChange& change, std::shared_ptr<const SessionWork> work,
                bool isChanged);
    void setCurrentSession(std::optional<UUID> id);
    void leaveSession();
    void keepDecisionsOf(const ImportController& controller);
    void beginSessionOfProject(const FileURL& file);
    void projectIsOpen();
    static platform::Task open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                               std::weak_ptr<ImportController> controller, std::uint64_t opening);
    void open(const UUID& sessionId, StoredSession read, ImportController& controller);
    static platform::Task remove(std::weak_ptr<SessionManager> weak, UUID sessionId,
                                 std::shared_ptr<bool> wasThere);
    static platform::Task look(std::weak_ptr<SessionManager> weak);
    void adopt(StoredLists onDisk);
    void autosave(const ImportController& controller, bool isChanged);
    void autosaveAgain();
    void lookAgain();

    const std::shared_ptr<const platform::Clock> clock_;
    const SessionStore store_;
    Repeating autosaveTimer_, lookTimer_;
    bool isStarted_ = false;
    std::uint64_t openings_ = 0; ///< number of the last one: an earlier one that still reads does nothing
    std::optional<std::string> openingProject_; ///< the name of a project while it is opened
    /// Before what uses it: destroyed behind it, when it waits for all that was posted.
    const std::unique_ptr<platform::SerialQueue> queue_;
    const std::shared_ptr<FolderSettings> folderSettings_;
    const std::shared_ptr<SessionFolderList> folders_;
    const StoredSessions stored_;
    SessionPlaces places_;
    const std::unique_ptr<Reports> reports_;
    const std::shared_ptr<SessionWrites> writes_;
    const std::shared_ptr<SessionAutosave> autosave_;
    platform::Task looking_ = platform::Task::ended();
};

} // namespace orvane
