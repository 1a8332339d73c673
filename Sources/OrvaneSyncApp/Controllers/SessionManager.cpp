#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "OrvaneSyncApp/Controllers/FolderSettings.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Log.h"
#include "Platform/Text.h"

#include <cassert>
#include <chrono>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr std::chrono::seconds autosaveInterval{5};
constexpr std::chrono::seconds lookInterval{1};

/// For comparisons: each once, in one order, however it was written.
std::set<std::string> foldersOf(const std::vector<FileURL>& urls) {
    std::set<std::string> all;
    for (const FileURL& url : urls) all.insert(url.pathText());
    return all;
}

} // namespace

/// While it lives, changes of the clips are no edits.
struct SessionManager::Restoring {
    explicit Restoring(SessionManager& owner) : manager(owner) { manager.isRestoring_ = true; }
    ~Restoring() { manager.isRestoring_ = false; }
    Restoring(const Restoring&) = delete;
    Restoring& operator=(const Restoring&) = delete;

    SessionManager& manager;
};

/// What the disk says of all sessions.
struct SessionManager::Lists {
    std::vector<SessionInfo> sessions;
    SessionStore::Stored<std::vector<FolderInfo>> folders;
};

std::shared_ptr<SessionManager> SessionManager::create(Dependencies dependencies) {
    if (dependencies.sessionsDir.empty()) dependencies.sessionsDir = AppStorageHelper::sessionsDirectory();
    return std::shared_ptr<SessionManager>(new SessionManager(std::move(dependencies)));
}

SessionManager::SessionManager(Dependencies dependencies)
    : mainThread_(std::move(dependencies.mainThread)), clock_(std::move(dependencies.clock)),
      store_(std::move(dependencies.sessionsDir)), list_(store_.list()),
      autosaveTimer_(mainThread_, autosaveInterval, [this] { autosave(); }),
      lookTimer_(mainThread_, lookInterval, [this] { lookAgain(); }),
      knownRecords_(std::make_shared<SessionStore::KnownRecords>()),
      queue_(platform::SerialQueue::create("sessions")),
      folderSettings_(std::make_shared<FolderSettings>(std::move(dependencies.settings), mainThread_)),
      folders_(std::make_shared<SessionFolderList>(store_, *queue_, mainThread_)),
      writes_(std::make_shared<SessionWrites>(static_cast<SessionWrites::Owner&>(*this), store_, *queue_,
                                              mainThread_)) {
    folders_->adopt(store_.readFolderInfos());
    folders_->whenChanged = [this] { notify(SessionField::folderInfos); };
    folders_->whenWritten = [this](const std::optional<std::string>& kept) { folderListIsWritten(kept); };
    folderSettings_->whenChanged = [this] { captureActiveSettingsSnapshot(); };
    reportProblem();
}

SessionManager::~SessionManager() {
    listeners_ = {};
    leaveSession();
    writes_->postUnwritten();
    folders_->postUnwritten();
}

void SessionManager::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

platform::Subscription SessionManager::onChange(std::function<void(SessionField)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
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
    scheduleSave();
}

platform::Task SessionManager::save(SessionWork newWork, std::optional<std::string> name, bool isChanged) {
    if (!open_.id) return platform::Task::ended(); // nothing to wait for
    const UUID id = *open_.id;
    const UnwrittenSession* waiting = writes_->find(id);
    if (newWork.leavesClipsAlone && waiting != nullptr && waiting->work) {
        const SessionWork& earlier = *waiting->work; // whose clips are still to be written
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
    autosaveController_ = controller;
    controllerObservation_ = controller->onChange([this](ImportField field) {
        if (field == ImportField::syncGroups || field == ImportField::wildTracks ||
            field == ImportField::videoFolderURL || field == ImportField::audioFolderURL ||
            field == ImportField::scanScope || field == ImportField::sourceCorrections)
            scheduleSave();
    });
    controller->project().whenOpening = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->beginSessionOfProject();
    };
    controller->project().whenOpened = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->projectIsOpen();
    };
    autosaveTimer_.start();
    lookTimer_.start();
    folderSettings_->observe();
}

/// One save for all the changes of a turn of the run loop.
void SessionManager::scheduleSave() {
    if (isRestoring_ || isProjectOpening_ || std::exchange(isSaveScheduled_, true)) return;
    mainThread_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->saveScheduledChanges();
    });
}

void SessionManager::saveScheduledChanges() {
    if (isSaveScheduled_) autosaveIfNeeded();
}

/// A list is saved empty only if the editor has taken the last clip out: work that is left behind, a card
/// that is empty today and clips that could not be read leave what is on the disk.
void SessionManager::autosaveIfNeeded() {
    const bool isChanged = std::exchange(isSaveScheduled_, false);
    const auto controller = autosaveController_.lock();
    if (!controller || !open_.id || isProjectOpening_) return;
    SessionWork work = open_.workOf(*controller);
    work.leavesClipsAlone = work.groups.empty() && !work.isEmptiedByEdit;
    // Without clips there may be sound, which has names.
    if (!work.leavesClipsAlone || !controller->work().wildTracks().empty())
        save(std::move(work), std::nullopt, isChanged);
}

void SessionManager::autosave() {
    writes_->retryFailed();
    folders_->write();
    // Who waits for the saves so far would wait for ever where one takes longer than this.
    if (!writes_->isFinishing()) autosaveIfNeeded();
}

void SessionManager::lookAgain() {
    if (looking_.isDone()) looking_ = look(weak_from_this());
}

void SessionManager::resignActive() {
    assertOnMainThread();
    autosaveIfNeeded();
    autosaveTimer_.stop();
    lookTimer_.stop();
}

void SessionManager::becomeActive() {
    assertOnMainThread();
    autosaveTimer_.start();
    lookTimer_.start();
    autosaveIfNeeded();
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
    auto reading = platform::onQueue(*self->queue_, self->mainThread_,
                                     [store = self->store_, known = self->knownRecords_] {
                                         return Lists{store.list({}, known.get()), store.readFolderInfos()};
                                     });
    self.reset();
    Lists onDisk = co_await reading;
    self = weak.lock();
    if (self) self->adopt(std::move(onDisk));
}

/// The queue is in order, and so is what comes back from it: what the disk lacks of the changes is unwritten.
void SessionManager::adopt(Lists onDisk) {
    SessionList list(std::move(onDisk.sessions));
    for (const auto& [id, unwritten] : writes_->unwritten()) {
        const SessionInfo* there = list.find(id);
        SessionInfo info = there != nullptr ? *there : unwritten.info;
        unwritten.change.apply(info);
        list.place(std::move(info));
    }
    // The open session can be named and moved even where another process has deleted it.
    const SessionInfo* current = open_.id ? session(*open_.id) : nullptr;
    if (current != nullptr && list.find(*open_.id) == nullptr) list.place(*current);
    folders_->adopt(std::move(onDisk.folders));
    reportProblem();
    if (list.all() == list_.all()) return;
    list_ = std::move(list);
    notify(SessionField::sessions);
}

platform::Task SessionManager::load(UUID sessionId, const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    return open(weak_from_this(), sessionId, controller, ++openings_);
}

platform::Task SessionManager::open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                                    std::weak_ptr<ImportController> controller, std::uint64_t opening) {
    auto self = weak.lock();
    self->open_.keptOf.reset(); // what is kept from here on is told behind the opening
    self->leaveSession();
    self->captureActiveSettingsSnapshot();
    if (self->writes_->find(sessionId) != nullptr) { // what is read must be the newest
        const platform::Task writing = self->writes_->start(sessionId);
        self.reset();
        co_await writing;
        self = weak.lock();
        if (!self || self->openings_ != opening) co_return;
    }
    auto reading = platform::onQueue(*self->queue_, self->mainThread_, [store = self->store_, sessionId] {
        return readStoredSession(store, sessionId);
    });
    self.reset();
    const std::stop_token stop = co_await platform::OwnStopToken{};
    std::optional<StoredSession> read = co_await reading;
    self = weak.lock();
    const auto work = controller.lock();
    if (!self || !work || !read || self->openings_ != opening || stop.stop_requested()) co_return;
    self->leaveSession(); // what was edited meanwhile is saved where it belongs
    self->open(sessionId, std::move(*read), *work);
}

void SessionManager::open(const UUID& sessionId, StoredSession read, ImportController& controller) {
    writes_->opened(sessionId, read.groups);
    SessionFolders media = read.folders.record.value_or(SessionFolders{});
    SyncGroupList groups = read.groups.groups;
    std::vector<WildTrack> wildTracks = read.wildTracks.record.value_or(std::vector<WildTrack>());
    if (const UnwrittenSession* newer = writes_->find(sessionId); newer != nullptr && newer->work) {
        if (!newer->work->leavesClipsAlone) groups = newer->work->groups; // which the disk would not take
        media = newer->work->folders.folders;
        if (const auto& tracks = newer->work->wildTracks.tracks) wildTracks = *tracks;
    }
    {
        const Restoring restoring(*this);
        controller.openStoredWork({media.videoFolder, media.audioFolder, std::move(groups),
                                   std::move(wildTracks), media.scope, media.corrections, media.matchedBy});
    }
    setCurrentSession(sessionId);
    open_.isRead(read);
    folders_->adopt(std::move(read.sessionFolders));
    reportProblem();
    applySettingsOfFolder(sessionId);
}

platform::Task SessionManager::loadMostRecentSession(std::shared_ptr<ImportController> controller) {
    const std::weak_ptr<SessionManager> weak = weak_from_this();
    co_await loadSessionList();
    const auto self = weak.lock();
    if (!self || self->sessions().empty()) co_return;
    co_await self->load(self->sessions().front().id, controller);
}

platform::Task SessionManager::findSession(std::vector<FileURL> folders,
                                           std::shared_ptr<std::optional<UUID>> found) const {
    assertOnMainThread();
    std::vector<UUID> candidates;
    for (const SessionInfo& info : sessions())
        if (info.groupCount > 0 && info.id != open_.id) candidates.push_back(info.id);
    auto reading =
        platform::onQueue(*queue_, mainThread_,
                          [store = store_, candidates = std::move(candidates),
                           wanted = foldersOf(folders)](const std::stop_token& stop) -> std::optional<UUID> {
                              for (const UUID& id : candidates) {
                                  platform::throwIfStopped(stop);
                                  const auto record = store.readFolders(id).record;
                                  if (!record) continue;
                                  if (!wanted.empty() && foldersOf(allFolders(*record)) == wanted) return id;
                              }
                              return std::nullopt;
                          });
    *found = co_await reading;
}

platform::Task SessionManager::newSession(ImportController& controller) {
    assertOnMainThread();
    ++openings_; // one that still reads is no longer asked for
    leaveSession();
    {
        const Restoring restoring(*this);
        controller.openStoredWork({});
    }
    setCurrentSession(UUID::random());
    return save(controller);
}

void SessionManager::close(ImportController& controller) {
    assertOnMainThread();
    ++openings_;
    leaveSession();
    setCurrentSession(std::nullopt); // before the clips go, so that their going is no change of the session
    controller.reset();
}

/// What of the open session waits for a moment of its own happens now.
void SessionManager::leaveSession() {
    saveScheduledChanges();
    folderSettings_->sayNowIfChanged();
}

/// The clips of the work before may stand until those of the project do; they are kept where they belong.
void SessionManager::beginSessionOfProject() {
    ++openings_;
    autosaveIfNeeded();
    folderSettings_->sayNowIfChanged();
    setCurrentSession(UUID::random());
    isProjectOpening_ = true;
}

/// Or it was given up on the way. Not where another session was opened meanwhile.
void SessionManager::projectIsOpen() {
    if (!std::exchange(isProjectOpening_, false)) return;
    if (const auto controller = autosaveController_.lock()) save(*controller);
}

void SessionManager::setCurrentSession(std::optional<UUID> id) {
    const auto before = open_.id;
    isProjectOpening_ = false;
    if (before && before != id && writes_->find(*before) == nullptr) writes_->closed(*before);
    open_.become(id);
    reportProblem();
    notify(SessionField::currentSessionId);
}

bool SessionManager::keepsClipsFromElsewhere(const std::vector<FileURL>& folders) const {
    const SessionInfo* current = open_.id ? session(*open_.id) : nullptr;
    return current != nullptr && current->groupCount > 0 && open_.isElsewhere(folders);
}

// Names and places.

platform::Task SessionManager::rename(const UUID& sessionId, std::string name) {
    return decide(sessionId, {.name = std::move(name), .nameAutoDerived = false});
}

platform::Task SessionManager::setFolder(const UUID& sessionId, const std::optional<std::string>& folder) {
    std::optional<std::string> name(platform::text::trimmed(folder.value_or("")));
    if (name->empty()) name.reset();
    return decide(sessionId, {.folder = std::move(name)});
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
    if (self->open_.has(sessionId)) {
        ++self->openings_;
        self->setCurrentSession(std::nullopt);
        // Clips that stayed would be work that nothing saves.
        if (const auto controller = self->autosaveController_.lock()) controller->reset();
    }
    self->list_.remove(sessionId);
    self->notify(SessionField::sessions);
}

// What comes back from the queue.

void SessionManager::isWritten(const UUID& id, const std::shared_ptr<const SessionWork>& work) {
    if (!open_.has(id)) return writes_->closed(id);
    if (!work) return;
    open_.isWritten(*work);
    reportProblem();
}

std::shared_ptr<const SessionWork> SessionManager::isDeletedByAnother(const UUID& id, bool isChanged) {
    const auto controller = autosaveController_.lock();
    if (!open_.has(id) || !controller) {
        list_.remove(id);
        notify(SessionField::sessions);
        return nullptr;
    }
    if (isChanged) return std::make_shared<const SessionWork>(open_.workOf(*controller));
    open_.deletionProblem = "Another program has deleted this session; the next change saves it anew";
    reportProblem();
    return nullptr;
}

std::optional<std::string> SessionManager::saveError(const UUID& sessionId) const {
    const auto& failures = writes_->failures();
    const auto failure = failures.find(sessionId);
    return failure == failures.end() ? std::nullopt : std::optional(failure->second);
}

void SessionManager::folderListIsWritten(const std::optional<std::string>& kept) {
    if (kept) {
        open_.keptProblem = kept;
        open_.keptOf.reset();
    }
    reportProblem();
    reportFailures();
}

void SessionManager::reportFailures() {
    std::optional<std::string> failure = folders_->writeFailure();
    if (!writes_->failures().empty()) failure = writes_->failures().begin()->second;
    if (failure) platform::logError("Session save failed: " + *failure);
    if (failure == lastSaveError_) return;
    lastSaveError_ = std::move(failure);
    notify(SessionField::lastSaveError);
}

/// Also of a session that was left: the texts name the file.
void SessionManager::reportKeptFiles(const UUID& id, const std::vector<std::string>& kept) {
    if (kept.empty()) return;
    open_.keptProblem = platform::text::joined(kept, "; ");
    open_.keptOf = id;
    reportProblem();
}

void SessionManager::reportProblem() {
    auto text = open_.problem(folders_->readProblem());
    if (problem_ == text) return;
    problem_ = std::move(text);
    notify(SessionField::problem);
}

} // namespace orvane
