#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <chrono>
#include <filesystem>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr std::chrono::seconds autosaveInterval{5};
constexpr std::chrono::seconds lookInterval{1};

/// A copy replaces the clips of a session, which may be good.
void refuseUnreadableCopy(const std::optional<StoredSession>& read, const std::string& folder) {
    if (!read || (!read->groups.file && !read->groups.problem))
        throw platform::FileError("There is no session in the folder " + folder);
    if (read->groups.problem) throw platform::FileError(*read->groups.problem);
}

} // namespace

/// Receives the results of the writing.
class SessionManager::Reports : public SessionWrites::Owner {
  public:
    explicit Reports(SessionManager& manager) : manager_(manager) {}

    void isWritten(const UUID& id, const std::shared_ptr<const SessionWork>& work) override;
    void adopt(SessionInfo info) override { manager_.adopt(std::move(info)); }
    void reportKeptFiles(const UUID& id, const std::vector<std::string>& kept) override;
    void reportFailures() override;
    std::shared_ptr<const SessionWork> isDeletedByAnother(const UUID& id, bool isChanged) override;
    void folderListIsWritten(const std::optional<std::string>& kept);

  private:
    SessionManager& manager_;
};

std::shared_ptr<SessionManager> SessionManager::create(Dependencies dependencies) {
    if (dependencies.sessionsDir.empty()) dependencies.sessionsDir = AppStorageHelper::sessionsDirectory();
    return std::shared_ptr<SessionManager>(new SessionManager(std::move(dependencies)));
}

SessionManager::SessionManager(Dependencies dependencies)
    : SessionStatus(std::move(dependencies.mainThread),
                    SessionList(SessionStore(dependencies.sessionsDir).list())),
      clock_(std::move(dependencies.clock)), store_(std::move(dependencies.sessionsDir)),
      autosaveTimer_(mainThread_, autosaveInterval, [this] { autosaveAgain(); }),
      lookTimer_(mainThread_, lookInterval, [this] { lookAgain(); }),
      queue_(platform::SerialQueue::create("sessions")),
      folderSettings_(std::make_shared<FolderSettings>(std::move(dependencies.settings), mainThread_)),
      folders_(std::make_shared<SessionFolderList>(store_, *queue_, mainThread_)),
      stored_(store_, *queue_, mainThread_),
      places_(*this, folders_, folderSettings_,
              [this](const UUID& id, SessionInfoChange change) { return decide(id, std::move(change)); }),
      reports_(std::make_unique<Reports>(*this)),
      writes_(std::make_shared<SessionWrites>(*reports_, store_, *queue_, mainThread_)),
      autosave_(std::make_shared<SessionAutosave>(
          mainThread_,
          [this](const ImportController& controller, bool isChanged) { autosave(controller, isChanged); })) {
    folders_->adopt(store_.readFolderInfos());
    folders_->whenChanged = [this] { notify(SessionField::folderInfos); };
    folders_->whenWritten = [this](const std::optional<std::string>& kept) {
        reports_->folderListIsWritten(kept);
    };
    folderSettings_->whenChanged = [this] { places_.captureSettings(); };
    reportProblem();
}

SessionManager::~SessionManager() {
    listeners_ = {};
    leaveSession();
    writes_->postUnwritten();
    folders_->postUnwritten();
}

// Saving.

platform::Task SessionManager::save(const ImportController& controller, std::optional<std::string> name) {
    assertOnMainThread();
    return save(open_.workOf(controller), std::move(name), true);
}

void SessionManager::beginSessionOfOpenWork(const ImportController& controller) {
    assertOnMainThread();
    const OpenWork& work = controller.work();
    if (open_.id || (work.syncGroups().empty() && work.wildTracks().empty())) return;
    setCurrentSession(UUID::random());
    autosave_->schedule();
}

platform::Task SessionManager::save(SessionWork newWork, std::optional<std::string> name, bool isChanged) {
    if (!open_.id) return platform::Task::ended(); // nothing to write
    const UUID id = *open_.id;
    const UnwrittenSession* waiting = writes_->find(id);
    if (newWork.leavesClipsAlone && waiting != nullptr && waiting->work) {
        const SessionWork& earlier = *waiting->work; // its clips are still to be written
        newWork.groups = earlier.groups;
        newWork.isEmptiedByEdit = earlier.isEmptiedByEdit;
        newWork.leavesClipsAlone = earlier.leavesClipsAlone;
    }
    auto work = std::make_shared<const SessionWork>(std::move(newWork));
    change(id, open_.changeBySave(*work, std::move(name), clock_->date()), work, isChanged);
    return writes_->start(id);
}

void SessionManager::change(const UUID& id, const SessionInfoChange& change,
                            std::shared_ptr<const SessionWork> work, bool isChanged) {
    const SessionInfo* shown = session(id);
    SessionInfo info = shown != nullptr ? *shown : SessionInfo{.id = id, .created = *change.modified};
    change.apply(info);
    writes_->change(info, change, std::move(work), isChanged);
    adopt(std::move(info));
}

void SessionManager::adopt(SessionInfo info) {
    list_.place(std::move(info));
    notify(SessionField::sessions);
}

void SessionManager::start(const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    if (std::exchange(isStarted_, true)) return;
    autosave_->watch(controller);
    controller->project().whenOpening = [weak = weak_from_this()](const FileURL& file) {
        if (const auto self = weak.lock()) self->beginSessionOfProject(file);
    };
    controller->project().whenOpened = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->projectIsOpen();
    };
    autosaveTimer_.start();
    lookTimer_.start();
    folderSettings_->observe();
}

/// An empty list is saved only if the editor has removed the last clip. If the list is empty for another
/// reason (the work was closed, the card is empty, the clips could not be read), the clips on the disk are
/// kept.
void SessionManager::autosave(const ImportController& controller, bool isChanged) {
    if (!open_.id) return;
    SessionWork work = open_.workOf(controller);
    work.leavesClipsAlone = work.groups.empty() && !work.isEmptiedByEdit;
    // Without clips there may be wild tracks, which have names.
    if (!work.leavesClipsAlone || !controller.work().wildTracks().empty())
        save(std::move(work), std::nullopt, isChanged);
}

void SessionManager::autosaveAgain() {
    writes_->retryFailed();
    folders_->write();
    // A task that waits for all saves so far would never end if a save takes longer than this interval.
    if (!writes_->isFinishing()) autosave_->save();
}

void SessionManager::lookAgain() {
    if (looking_.isDone()) looking_ = look(weak_from_this());
}

void SessionManager::resignActive() {
    assertOnMainThread();
    autosave_->save();
    autosaveTimer_.stop();
    lookTimer_.stop();
}

void SessionManager::becomeActive() {
    assertOnMainThread();
    autosaveTimer_.start();
    lookTimer_.start();
    autosave_->save();
}

platform::Task SessionManager::flush() {
    assertOnMainThread();
    leaveSession();
    writes_->retryFailed();
    return writes_->finish(folders_->write());
}

// Opening.

platform::Task SessionManager::loadSessionList() {
    assertOnMainThread();
    return look(weak_from_this());
}

platform::Task SessionManager::look(std::weak_ptr<SessionManager> weak) {
    auto self = weak.lock();
    const auto onDisk = std::make_shared<StoredLists>();
    const platform::Task reading = self->stored_.readLists(onDisk);
    self.reset();
    co_await reading;
    self = weak.lock();
    if (self) self->adopt(std::move(*onDisk));
}

/// The queue works in order, so a change that the list from the disk does not have is not written yet.
void SessionManager::adopt(StoredLists onDisk) {
    SessionList list(std::move(onDisk.sessions));
    for (const auto& [id, unwritten] : writes_->unwritten()) {
        const SessionInfo* there = list.find(id);
        SessionInfo info = there != nullptr ? *there : unwritten.info;
        unwritten.change.apply(info);
        list.place(std::move(info));
    }
    // The open session can be renamed and moved even if another process has deleted it.
    const SessionInfo* current = open_.id ? session(*open_.id) : nullptr;
    if (current != nullptr && list.find(*open_.id) == nullptr) list.place(*current);
    folders_->adopt(std::move(onDisk.folders));
    unreadable_ = std::move(onDisk.unreadable);
    reportProblem();
    if (list.all() == list_.all()) return;
    list_ = std::move(list);
    notify(SessionField::sessions);
}

platform::Task SessionManager::load(UUID sessionId, const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    return open(weak_from_this(), sessionId, controller, ++openings_);
}

platform::Task SessionManager::loadCopy(const std::string& path,
                                        const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    const std::filesystem::path folder(path);
    const auto id = UUID::fromText(folder.stem().string());
    if (!id) throw platform::FileError("The folder " + path + " is not one of a session");
    return open(weak_from_this(), *id, controller, ++openings_, folder.parent_path().string());
}

platform::Task SessionManager::open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                                    std::weak_ptr<ImportController> controller, std::uint64_t opening,
                                    std::optional<std::string> elsewhere) {
    const std::stop_token stop = co_await platform::OwnStopToken{};
    auto self = weak.lock();
    self->open_.keptOf.reset(); // files that are kept from here on are reported after the opening
    self->leaveSession();
    self->places_.captureSettings();
    if (self->writes_->find(sessionId) != nullptr) { // the newest state must be read
        const platform::Task writing = self->writes_->start(sessionId);
        self.reset();
        co_await writing;
        platform::throwIfStopped(stop);
        self = weak.lock();
        if (!self) co_return;
        self->throwIfReplaced(opening);
    }
    const auto read = std::make_shared<std::optional<StoredSession>>();
    const platform::Task reading =
        elsewhere ? self->stored_.readCopy(sessionId, *elsewhere, read) : self->stored_.read(sessionId, read);
    self.reset();
    co_await reading;
    platform::throwIfStopped(stop);
    self = weak.lock();
    auto work = controller.lock();
    if (!self || !work) co_return;
    self->throwIfReplaced(opening);
    if (elsewhere) refuseUnreadableCopy(*read, *elsewhere);
    if (!*read) co_return;
    self->keepDecisionsOf(*work);
    self->leaveSession(); // edits made meanwhile are saved in the session that they belong to
    // If a copy is opened, the clips that the session has on the disk were not read. A save keeps their file.
    self->writes_->opened(sessionId, elsewhere ? SessionStore::Groups() : (*read)->groups);
    const auto& info = (*read)->info.record;
    if (elsewhere && info && self->session(sessionId) == nullptr) self->adopt(*info);
    self->open(sessionId, std::move(**read), *work);
    if (elsewhere) {
        self->open_.isOfCopy = true;
        self->save(*work);
    }
    const platform::Task recalling = work->smartAudio().recalled();
    self.reset();
    work.reset();
    try {
        co_await recalling;
    } catch (const platform::Stopped&) { // the session is open all the same
    }
    self = weak.lock();
    if (self) self->throwIfReplaced(opening);
}

void SessionManager::throwIfReplaced(std::uint64_t opening) const {
    if (openings_ != opening) throw platform::Stopped();
}

void SessionManager::open(const UUID& sessionId, StoredSession read, ImportController& controller) {
    SessionFolders media = read.folders.record.value_or(SessionFolders{});
    SyncGroupList groups = read.groups.groups;
    std::vector<WildTrack> wildTracks = read.wildTracks.record.value_or(std::vector<WildTrack>());
    if (const UnwrittenSession* newer = writes_->find(sessionId); newer != nullptr && newer->work) {
        if (!newer->work->leavesClipsAlone) groups = newer->work->groups; // these could not be written
        media = newer->work->folders.folders;
        if (const auto& tracks = newer->work->wildTracks.tracks) wildTracks = *tracks;
    }
    {
        const SessionAutosave::Restoring restoring(*autosave_);
        controller.openStoredWork({media.videoFolder, media.audioFolder, std::move(groups),
                                   std::move(wildTracks), media.scope, media.corrections, media.matchedBy});
    }
    setCurrentSession(sessionId);
    open_.isRead(read);
    folders_->adopt(std::move(read.sessionFolders));
    reportProblem();
    if (places_.applySettings(sessionId)) notify(SessionField::settingsOfFolder);
}

platform::Task SessionManager::loadMostRecentSession(std::shared_ptr<ImportController> controller) {
    const std::weak_ptr<SessionManager> weak = weak_from_this();
    const std::stop_token stop = co_await platform::OwnStopToken{};
    co_await loadSessionList();
    platform::throwIfStopped(stop);
    const auto self = weak.lock();
    if (!self || self->sessions().empty()) co_return;
    co_await self->load(self->sessions().front().id, controller);
}

platform::Task SessionManager::findSession(const std::vector<FileURL>& folders,
                                           std::shared_ptr<std::optional<UUID>> found) const {
    assertOnMainThread();
    std::vector<UUID> candidates;
    for (const SessionInfo& info : sessions())
        if (info.groupCount > 0 && info.id != open_.id) candidates.push_back(info.id);
    return stored_.find(std::move(candidates), folders, std::move(found));
}

platform::Task SessionManager::newSession(ImportController& controller) {
    assertOnMainThread();
    ++openings_; // an opening that is still reading is dropped
    keepDecisionsOf(controller);
    leaveSession();
    {
        const SessionAutosave::Restoring restoring(*autosave_);
        controller.openStoredWork({});
    }
    setCurrentSession(UUID::random());
    return save(controller);
}

void SessionManager::close(ImportController& controller) {
    assertOnMainThread();
    ++openings_;
    leaveSession();
    setCurrentSession(std::nullopt); // before the clips are removed, so that this is no change of the session
    controller.reset();
}

void SessionManager::leaveForOtherWork(const ImportController& controller) {
    assertOnMainThread();
    ++openings_;
    keepDecisionsOf(controller);
    leaveSession();
    setCurrentSession(std::nullopt);
}

/// Makes the pending saves of the open session now.
void SessionManager::leaveSession() {
    autosave_->saveScheduled();
    folderSettings_->notifyNowIfChanged();
}

/// To be called when other work replaces work without a session, whose decisions would be lost.
void SessionManager::keepDecisionsOf(const ImportController& controller) {
    if (isStarted_ && controller.work().mayHoldDecisions()) beginSessionOfOpenWork(controller);
}

/// The clips of the earlier work may stay until the project's clips are made; they are saved in their own
/// session.
void SessionManager::beginSessionOfProject(const FileURL& file) {
    ++openings_;
    if (const auto controller = autosave_->controller()) keepDecisionsOf(*controller);
    autosave_->save();
    folderSettings_->notifyNowIfChanged();
    setCurrentSession(UUID::random());
    autosave_->projectBegins();
    openingProject_ = std::filesystem::path(file.path).stem().string();
}

/// Also called when the project was abandoned. Has no effect if another session was opened meanwhile.
void SessionManager::projectIsOpen() {
    auto name = std::exchange(openingProject_, std::nullopt);
    if (!autosave_->projectEnds()) return;
    if (const auto controller = autosave_->controller()) save(*controller, std::move(name));
}

void SessionManager::setCurrentSession(std::optional<UUID> id) {
    const auto before = open_.id;
    autosave_->projectEnds();
    openingProject_.reset();
    if (before && before != id && writes_->find(*before) == nullptr) writes_->closed(*before);
    open_.become(id);
    reportProblem();
    notify(SessionField::currentSessionId);
}

// Names and places.

platform::Task SessionManager::rename(const UUID& sessionId, std::string name) {
    return decide(sessionId, {.name = std::move(name), .nameAutoDerived = false});
}

platform::Task SessionManager::decide(const UUID& id, SessionInfoChange change) {
    assertOnMainThread();
    if (session(id) == nullptr) return platform::Task::ended();
    change.modified = clock_->date();
    this->change(id, change, nullptr, true);
    return writes_->start(id);
}

platform::Task SessionManager::deleteSession(UUID sessionId, std::shared_ptr<bool> wasThere) {
    assertOnMainThread();
    return remove(weak_from_this(), sessionId, std::move(wasThere));
}

platform::Task SessionManager::remove(std::weak_ptr<SessionManager> weak, UUID sessionId,
                                      std::shared_ptr<bool> wasThere) {
    const platform::Task removing = weak.lock()->writes_->remove(sessionId, std::move(wasThere));
    co_await removing;
    const auto self = weak.lock();
    if (!self) co_return;
    if (self->open_.has(sessionId)) { // an opening that is still reading is of another session
        self->setCurrentSession(std::nullopt);
        // If the clips stayed, changes of them would not be saved.
        if (const auto controller = self->autosave_->controller()) controller->reset();
    }
    self->list_.remove(sessionId);
    self->notify(SessionField::sessions);
}

// Results from the queue.

void SessionManager::Reports::isWritten(const UUID& id, const std::shared_ptr<const SessionWork>& work) {
    if (!manager_.open_.has(id)) return manager_.writes_->closed(id);
    if (!work) return;
    manager_.open_.isWritten(*work);
    manager_.reportProblem();
}

std::shared_ptr<const SessionWork> SessionManager::Reports::isDeletedByAnother(const UUID& id,
                                                                               bool isChanged) {
    const auto controller = manager_.autosave_->controller();
    if (!manager_.open_.has(id) || !controller) {
        manager_.list_.remove(id);
        manager_.notify(SessionField::sessions);
        return nullptr;
    }
    if (isChanged) return std::make_shared<const SessionWork>(manager_.open_.workOf(*controller));
    manager_.open_.deletionProblem =
        "Another program has deleted this session; the next change saves it again";
    manager_.reportProblem();
    return nullptr;
}

std::optional<std::string> SessionManager::saveError(const UUID& sessionId) const {
    const auto& failures = writes_->failures();
    const auto failure = failures.find(sessionId);
    return failure == failures.end() ? std::nullopt : std::optional(failure->second);
}

std::vector<SessionManager::Unsaved> SessionManager::unsaved() const {
    std::vector<Unsaved> all;
    for (const auto& [id, data] : writes_->unwritten())
        all.push_back({id, data.info.name, writes_->unwrittenClips(id), saveError(id).value_or("")});
    return all;
}

void SessionManager::Reports::folderListIsWritten(const std::optional<std::string>& kept) {
    if (kept) {
        manager_.open_.keptProblem = kept;
        manager_.open_.keptOf.reset();
    }
    manager_.reportProblem();
    reportFailures();
}

void SessionManager::Reports::reportFailures() {
    std::optional<std::string> failure = manager_.folders_->writeFailure();
    if (!manager_.writes_->failures().empty()) failure = manager_.writes_->failures().begin()->second;
    manager_.setLastSaveError(std::move(failure));
}

/// Also for a session that is closed: the texts name the file.
void SessionManager::Reports::reportKeptFiles(const UUID& id, const std::vector<std::string>& kept) {
    if (kept.empty()) return;
    manager_.open_.keptProblem = platform::text::joined(kept, "; ");
    manager_.open_.keptOf = id;
    manager_.reportProblem();
}

/// The open session reports its record itself.
void SessionManager::reportProblem() {
    std::vector<std::string> ofLists;
    if (const auto& problem = folders_->readProblem()) ofLists.push_back(*problem);
    for (const std::string& problem : unreadable_)
        if (!open_.id || problem.find(open_.id->text()) == std::string::npos)
            ofLists.push_back(problem + "; the session is not listed, but can be opened from its folder");
    setProblem(
        open_.problem(ofLists.empty() ? std::nullopt : std::optional(platform::text::joined(ofLists, "; "))));
}

} // namespace orvane
