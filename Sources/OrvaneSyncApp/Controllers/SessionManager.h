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

/// Stores the open work: a session holds all clips with every edit, is saved in the background after every
/// change, and opens quickly. Sessions are kept in named folders, which have settings.
///
/// Interface thread, and asserts so. Decisions take effect in memory at once; reading and writing is done on
/// one queue, in order, except that the constructor reads the lists. The destructor waits for what is not
/// written yet: call `flush` first, which does not block. Held by a shared pointer, because its background
/// work holds a weak one.
class SessionManager : public SessionStatus, public std::enable_shared_from_this<SessionManager> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings; ///< those that are stored with the work's folder
        std::string sessionsDir{};                         ///< empty: that of the user account
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
    };
    static std::shared_ptr<SessionManager> create(Dependencies dependencies);
    ~SessionManager();

    /// Why the last writing of the session failed.
    std::optional<std::string> saveError(const UUID& sessionId) const;
    /// A session with changes that are not on the disk.
    struct Unsaved {
        UUID id;
        std::string name;
        std::size_t clips = 0; ///< with changes that are not on the disk
        std::string failure;   ///< as `saveError`; empty if its writing has not failed yet
    };
    std::vector<Unsaved> unsaved() const;
    /// Writes copies of the sessions whose clips are not saved into another folder. `loadCopy` opens the
    /// folder of such a copy. Does not wait for the disk of the sessions. The task throws FileError if the
    /// writing fails.
    platform::Task saveCopies(std::string folder) const { return writes_->writeCopies(std::move(folder)); }
    SessionFolderList& folders() { return *folders_; }
    SessionPlaces& places() { return places_; }

    // Saving.

    /// Saves the open session in the background; the task ends when it is written, when a later save has
    /// replaced this one, or when it has failed (`lastSaveError`). Does nothing without an open session. A
    /// given name is kept; a session without a given name is named after its media folders.
    platform::Task save(const ImportController& controller, std::optional<std::string> name = std::nullopt);
    /// If the open work has no session, makes one for it and saves it. Does nothing if there is one, or no
    /// work.
    void beginSessionOfOpenWork(const ImportController& controller);
    /// From this call on: saves after every change of clips, wild tracks or folders and every 5 seconds,
    /// watches the settings, notices within a second when another process changes the lists, and makes a
    /// session for a project that is opened, after saving the session of the earlier work; earlier work
    /// without a session that may hold decisions gets one first. A list without clips is saved only if the
    /// editor has emptied it. Later calls do nothing.
    void start(const std::shared_ptr<ImportController>& controller);
    /// The application loses the focus or gets it back: saves; the timers are paused in between.
    void resignActive();
    void becomeActive();
    /// Ends when every save so far, including that of the most recent change, is written or has failed. Saves
    /// that failed before are tried again.
    platform::Task flush();

    // Opening.

    /// Reads the session's clips and replaces the controller's work by them; the task ends when the work has
    /// them. Does nothing if there is no such session. A session whose clips can't be read opens without
    /// clips (`problem`), and their file is kept. A call that is stopped, or that another opening, new work
    /// or closing replaces, throws Stopped; if it was still reading, it leaves the work unchanged.
    platform::Task load(UUID sessionId, const std::shared_ptr<ImportController>& controller);
    /// Opens the folder of a session that was saved elsewhere, and saves it as the session with its id. If
    /// that session has clips on the disk, their file is kept as `groups.json.other`. Throws FileError if
    /// the folder does not have the name of a session folder; the task throws it if the folder has no clips
    /// that can be read, and the open session stays then.
    platform::Task loadCopy(const std::string& path, const std::shared_ptr<ImportController>& controller);
    platform::Task loadMostRecentSession(std::shared_ptr<ImportController> controller);
    /// Makes empty work under a new id and saves it at once. The task is that of `save`.
    platform::Task newSession(ImportController& controller);
    /// Closes the work and leaves empty work without a session. Decisions made so far are saved in the closed
    /// session; later ones are not.
    void close(ImportController& controller);
    /// Before a scan of other work: saves the decisions made so far as `close` does, and leaves the open work
    /// without a session, which the new clips would replace.
    void leaveForOtherWork(const ImportController& controller);
    /// Ends when the lists of sessions and folders match the disk plus the unwritten changes.
    platform::Task loadSessionList();
    /// Writes to `found` the session with clips, other than the open one, whose media were in exactly these
    /// folders; the most recently modified if there are several, absent if there is none.
    platform::Task findSession(const std::vector<FileURL>& folders,
                               std::shared_ptr<std::optional<UUID>> found) const;

    // The tasks end as that of `save`.

    platform::Task rename(const UUID& sessionId, std::string name);
    /// Cannot be undone. If it is the open session, its work is closed too, as by `close`; before `start`
    /// only the session is. Writes to `wasThere` whether the disk had the session, also if its record can't
    /// be read. Throws FileError if it could not be deleted; nothing is changed then.
    platform::Task deleteSession(UUID sessionId,
                                 std::shared_ptr<bool> wasThere = std::make_shared<bool>(false));

  private:
    class Reports;

    explicit SessionManager(Dependencies dependencies);

    void reportProblem();

    void adopt(SessionInfo info);
    platform::Task save(SessionWork work, std::optional<std::string> name, bool isChanged);
    platform::Task decide(const UUID& id, SessionInfoChange change);
    /// Applies the change to the session as it is shown, and notes it as unwritten.
    void change(const UUID& id, const SessionInfoChange& change, std::shared_ptr<const SessionWork> work,
                bool isChanged);
    void setCurrentSession(std::optional<UUID> id);
    void leaveSession();
    void keepDecisionsOf(const ImportController& controller);
    void beginSessionOfProject(const FileURL& file);
    void projectIsOpen();
    static platform::Task open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                               std::weak_ptr<ImportController> controller, std::uint64_t opening,
                               std::optional<std::string> elsewhere = std::nullopt);
    void throwIfReplaced(std::uint64_t opening) const;
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
    std::uint64_t openings_ = 0;                ///< number of the latest; an earlier one has no effect
    std::optional<std::string> openingProject_; ///< the name of a project while it is being opened
    std::vector<std::string> unreadable_;       ///< see `StoredLists`
    /// Declared before its users, so it is destroyed after them, which waits for all posted work.
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
