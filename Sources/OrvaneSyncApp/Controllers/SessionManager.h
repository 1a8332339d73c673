#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/SessionFolderList.h"
#include "OrvaneSyncApp/Controllers/SessionWriting.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "Platform/Listeners.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What of the sessions has changed.
enum class SessionField : std::uint8_t { sessions, currentSessionId, lastSaveError, problem, folderInfos };

/// Keeps the open work: a session holds all clips with every edit, is saved in the background after every
/// change, and opens again at once. Sessions lie in named folders, which carry settings.
///
/// Lives on the interface thread and asserts so. The records of sessions and folders, a few hundred bytes
/// each, are looked up at once; clips are read and all else is written on a queue of its own, the newest save
/// of a session winning. Destroying it writes what is not written yet. Held by a shared pointer, as its
/// background work holds it weakly.
class SessionManager : public std::enable_shared_from_this<SessionManager> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings; ///< those that follow the work into its folder
        std::string sessionsDir{};                         ///< empty: the user account's
        std::shared_ptr<const platform::Clock> clock = platform::systemClock();
    };
    static std::shared_ptr<SessionManager> create(Dependencies dependencies);
    ~SessionManager();

    // The state. Each getter is observable.

    /// All sessions, most recently modified first.
    const std::vector<SessionInfo>& sessions() const { return sessions_; }
    /// The open session; absent: nothing is saved.
    const std::optional<UUID>& currentSessionId() const { return currentSessionId_; }
    /// What the last writing of a session failed at; absent once all are written.
    const std::optional<std::string>& lastSaveError() const { return lastSaveError_; }
    /// What people should know: what can't be read of the open session or of the list of folders, that
    /// another program has deleted the session, or which file was kept.
    const std::optional<std::string>& problem() const { return problem_; }
    /// What the last writing of the list of folders failed at; absent once it is written.
    const std::optional<std::string>& folderListError() const { return folders_.writeFailure(); }
    /// What the last writing of this session failed at; absent once it is written.
    std::optional<std::string> saveError(const UUID& sessionId) const;
    /// Sorted by name.
    const std::vector<FolderInfo>& folderInfos() const { return folders_.all(); }

    /// Calls back after every change, on the interface thread.
    platform::Subscription onChange(std::function<void(SessionField)> callback);

    // Saving.

    /// Saves the open session in the background; the task ends when it is on the disk, a later save has taken
    /// its place, or it has failed (`lastSaveError`). Nothing without an open session. A name that is given
    /// stays; a session that nobody has named is named after its media folders.
    platform::Task save(const ImportController& controller, std::optional<std::string> name = std::nullopt);
    /// Gives work that is open without a session one of its own, which is saved; nothing where there is one,
    /// or no work.
    void beginSessionOfOpenWork(const ImportController& controller);
    /// From now on: saves after every change of clips, wild tracks or folders and every 5 seconds, watches
    /// the settings, and gives a project that is opened a session of its own, after that of the work before
    /// was saved. A list without clips is saved only where the editor has emptied it. Once; later calls do
    /// nothing.
    void start(const std::shared_ptr<ImportController>& controller);
    /// The application is left, or comes back: saves; the timer rests in between.
    void resignActive();
    void becomeActive();
    /// Done when every save so far is on the disk or has failed, a change that was just made too. What failed
    /// before is tried again.
    platform::Task flush();

    // Opening.

    /// Reads the session's clips on the queue and then replaces the controller's work by them; the task ends
    /// when they stand. Nothing when there is no such session. A session whose clips can't be read opens
    /// without any (`problem`), and their file is kept. A later call takes the place of one that still reads.
    platform::Task load(UUID sessionId, const std::shared_ptr<ImportController>& controller);
    platform::Task loadMostRecentSession(const std::shared_ptr<ImportController>& controller);
    /// Empty work under a new id, saved at once. The task is that of `save`.
    platform::Task newSession(ImportController& controller);
    /// Goes back to empty work without a session. What was decided in the one that was open is saved there;
    /// nothing that comes later is.
    void close(ImportController& controller);
    void loadSessionList();
    /// Leaves in `found` the session with clips, other than the open one, whose media lay in just these
    /// folders, of several the most recently modified; absent where there is none. Reads on the queue.
    platform::Task findSession(std::vector<FileURL> folders,
                               std::shared_ptr<std::optional<UUID>> found) const;

    // Names and places.

    void rename(const UUID& sessionId, std::string name);
    /// Blank: out of its folder.
    void setFolder(const UUID& sessionId, const std::optional<std::string>& folder);
    /// Cannot be taken back. Of the open session the work goes too, as by `close`, once this has been
    /// started. Throws FileError when it could not be deleted; all stands as it was then.
    void deleteSession(UUID sessionId);
    /// In the list, or a folder on the disk whose record can't be read.
    bool exists(const UUID& sessionId) const;
    /// The folder's name and the next shooting day, such as "Dreh DT 008"; nothing without a folder.
    std::optional<std::string> suggestedSessionName(const UUID& sessionId) const;
    const SessionInfo* session(const UUID& sessionId) const;
    /// Whether the open session has clips on the disk, and its folders there have nothing in common with
    /// these: none of them is the same as one of these, lies in it or has it in it.
    bool keepsClipsFromElsewhere(const std::vector<FileURL>& folders) const;

    // Folders (SessionManager+Folders.cpp).

    /// Those of sessions too, ascending.
    std::vector<std::string> folderNames() const;
    /// False for a blank name or one that is taken.
    bool createFolder(std::string_view name);
    /// Its sessions move along. False for a blank name or one that is taken.
    bool renameFolder(std::string from, std::string_view to);
    /// Nothing while a session lies in it.
    void deleteEmptyFolder(const std::string& name);
    /// Null when there is none.
    const FolderInfo* folderInfo(std::string_view name) const { return folders_.find(name); }
    void setLockitProject(const std::string& folder, std::optional<std::string> projectID);
    void setMetadataPrefix(const std::string& folder, std::optional<std::string> prefix);
    /// Blank: none.
    void setActivePreset(const std::string& folder, const std::optional<std::string>& presetName);
    std::optional<std::string> lockitProjectID(const UUID& sessionId) const;
    std::optional<std::string> metadataPrefix(const UUID& sessionId) const;
    std::optional<std::string> currentSessionFolderName() const;
    /// The present settings into the open session's folder, if it lies in one.
    void captureActiveSettingsSnapshot();

  private:
    using Work = SessionWork;
    using Unwritten = UnwrittenSession;
    using Outcome = SessionWriteOutcome;
    class Restoring;

    explicit SessionManager(Dependencies dependencies);
    void notify(SessionField field) const { listeners_.notify(field); }
    void assertOnMainThread() const;
    Date now() const { return clock_->date(); }

    platform::Task save(Work work, std::optional<std::string> name);
    SessionInfoChange changeBySave(const Work& work, std::optional<std::string> name) const;
    Work workOf(const ImportController& controller) const;
    /// Notes a change of a record as unwritten and shows it.
    Unwritten& change(const UUID& id, SessionInfoChange change);
    void adopt(SessionInfo info);
    void place(SessionInfo info);
    void setCurrentSession(std::optional<UUID> id);
    void loadFolderInfos();
    /// Puts the problem together and tells of it when it is another one.
    void reportProblem();
    void reportKeptFiles(const std::vector<std::string>& kept);
    bool isDeletedByAnother() const;
    void leaveSession();
    void beginSessionOfProject();
    void projectIsOpen();
    struct Read; ///< what the disk says of a session
    static platform::Task open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                               std::weak_ptr<ImportController> controller, std::uint64_t opening);
    void open(const UUID& sessionId, Read read, ImportController& controller);
    void scheduleSave();
    void saveScheduledChanges();
    void autosaveIfNeeded();
    void scheduleTimer();

    // SessionManager+Writing.cpp
    platform::Task startWriting(const UUID& id);
    static platform::Task write(std::weak_ptr<SessionManager> weak, UUID id, std::uint64_t token);
    class Flushing;
    static platform::Task finishWrites(std::weak_ptr<SessionManager> weak);
    bool isNewest(const UUID& id, std::uint64_t token) const;
    void writeNow(const UUID& id);
    void writeUnwritten();
    void retryFailedWrites();
    void finished(const UUID& id, Outcome outcome);
    void persistRecord(const UUID& id, SessionInfoChange change);
    void reportFailures();

    // SessionManager+Folders.cpp
    void startObservingSettingsChanges();
    void settingsChanged();
    void captureNowIfScheduled();
    void changeFolders(SessionStore::FolderChange change);
    void writeFolderChanges();
    void changeFolder(const std::string& name, std::function<void(FolderInfo&)> change);
    const FolderInfo* folderOfSession(const UUID& sessionId) const;

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::SettingsStore> settings_;
    const std::shared_ptr<const platform::Clock> clock_;
    const SessionStore store_;
    const PresetManager presetManager_{};
    platform::Listeners<SessionField> listeners_;

    std::vector<SessionInfo> sessions_;
    std::optional<UUID> currentSessionId_;
    std::optional<std::string> lastSaveError_;
    std::optional<std::string> problem_;
    // Of which the problem is put together, with that of the list of folders.
    std::optional<std::string> openingProblem_; ///< what of the open session could not be read
    std::optional<std::string> deletionProblem_;
    std::optional<std::string> keptProblem_; ///< the files that were kept last
    SessionFolderList folders_{store_};

    std::weak_ptr<ImportController> autosaveController_;
    platform::Subscription controllerObservation_;
    platform::Subscription settingsObservation_;
    std::shared_ptr<platform::Timer> autosaveTimer_;
    std::shared_ptr<platform::Timer> settingsTimer_;
    bool isStarted_ = false;
    bool isRestoring_ = false;      ///< changes of the clips are those of a session that opens
    std::uint64_t openings_ = 0;    ///< tells an opening that another has taken its place
    int flushes_ = 0;               ///< that wait for the saves so far
    bool isSaveScheduled_ = false;  ///< for the changes of this turn of the run loop
    bool isProjectOpening_ = false; ///< what stands is no longer the session's, or not yet

    /// The newest write token of each session: an older write stops where it finds another one.
    std::map<UUID, std::uint64_t> writeGeneration_;
    std::map<UUID, Unwritten> unwritten_;
    std::map<UUID, std::string> failures_; ///< of sessions in `unwritten_`
    // Of the open session, as this process last read or wrote them.
    SessionFolders knownFolders_; ///< of media
    WildTracksChange::Tracks knownWildTracks_;
    bool areFoldersUnreadable_ = false; ///< those of the open session
    std::vector<std::string> keptWhileOpening_;
    std::vector<platform::Task> writes_;
    /// Belongs to the queue.
    const std::shared_ptr<SessionGroupsWriter> groupsWriter_;
    /// Last: it is waited for before all else goes.
    const std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
