#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cassert>
#include <charconv>
#include <chrono>
#include <exception>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr std::chrono::seconds autosaveInterval{5};

std::vector<FileURL> allFolders(const SessionFolders& media) {
    std::vector<FileURL> all = media.scope.moreFolders;
    for (const auto& one : {media.videoFolder, media.audioFolder})
        if (one) all.push_back(*one);
    return all;
}

/// The same folder, or one within it.
bool isFolderWithin(const FileURL& inner, const FileURL& outer) {
    return inner == outer ||
           inner.path.starts_with(outer.path.ends_with('/') ? outer.path : outer.path + "/");
}

/// For comparisons: each once, in one order, however it was written.
std::set<std::string> foldersOf(const std::vector<FileURL>& urls) {
    std::set<std::string> all;
    for (const FileURL& url : urls) all.insert(url.pathText());
    return all;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// As the first match of "DT[ _-]*0*([0-9]+)", in any case, whose digits are a number of 64 bits.
std::optional<std::int64_t> shootingDayNumber(std::string_view name) {
    for (std::size_t at = 0; at + 2 <= name.size(); ++at) {
        if ((name[at] | 0x20) != 'd' || (name[at + 1] | 0x20) != 't') continue;
        std::size_t first = at + 2;
        while (first < name.size() && (name[first] == ' ' || name[first] == '_' || name[first] == '-'))
            ++first;
        if (first == name.size() || !isDigit(name[first])) continue;
        std::int64_t number = 0;
        const auto result = std::from_chars(name.data() + first, name.data() + name.size(), number);
        return result.ec == std::errc() ? std::optional(number) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

/// While it lives, changes of the clips are no edits.
class SessionManager::Restoring {
  public:
    explicit Restoring(SessionManager& manager) : manager_(manager) { manager_.isRestoring_ = true; }
    ~Restoring() { manager_.isRestoring_ = false; }
    Restoring(const Restoring&) = delete;
    Restoring& operator=(const Restoring&) = delete;

  private:
    SessionManager& manager_;
};

std::shared_ptr<SessionManager> SessionManager::create(Dependencies dependencies) {
    if (dependencies.sessionsDir.empty()) dependencies.sessionsDir = AppStorageHelper::sessionsDirectory();
    return std::shared_ptr<SessionManager>(new SessionManager(std::move(dependencies)));
}

SessionManager::SessionManager(Dependencies dependencies)
    : mainThread_(std::move(dependencies.mainThread)), settings_(std::move(dependencies.settings)),
      clock_(std::move(dependencies.clock)), store_(std::move(dependencies.sessionsDir)),
      sessions_(store_.list()), groupsWriter_(std::make_shared<SessionGroupsWriter>(store_)),
      queue_(platform::SerialQueue::create("sessions")) {
    loadFolderInfos();
}

SessionManager::~SessionManager() {
    listeners_ = {};
    saveScheduledChanges();
    captureNowIfScheduled();
    writeUnwritten();
    writeFolderChanges();
}

void SessionManager::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

platform::Subscription SessionManager::onChange(std::function<void(SessionField)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
}

// Saving.

platform::Task SessionManager::save(const ImportController& controller, std::optional<std::string> name) {
    assertOnMainThread();
    return save(workOf(controller), std::move(name));
}

void SessionManager::beginSessionOfOpenWork(const ImportController& controller) {
    assertOnMainThread();
    const OpenWork& work = controller.work();
    if (currentSessionId_ || (work.syncGroups().empty() && work.wildTracks().empty())) return;
    setCurrentSession(UUID::random());
    scheduleSave();
}

platform::Task SessionManager::save(Work newWork, std::optional<std::string> name) {
    if (!currentSessionId_) return finishWrites({}); // nothing to wait for
    const UUID id = *currentSessionId_;
    const auto waiting = unwritten_.find(id);
    if (newWork.leavesClipsAlone && waiting != unwritten_.end() && waiting->second.work) {
        const Work& earlier = *waiting->second.work; // whose clips are still to be written
        newWork.groups = earlier.groups;
        newWork.isEmptiedByEdit = earlier.isEmptiedByEdit;
        newWork.leavesClipsAlone = earlier.leavesClipsAlone;
    }
    auto work = std::make_shared<const Work>(std::move(newWork));
    change(id, changeBySave(*work, std::move(name))).work = std::move(work);
    return startWriting(id);
}

SessionInfoChange SessionManager::changeBySave(const Work& work, std::optional<std::string> name) const {
    const SyncGroupList& groups = work.groups;
    SessionInfoChange change;
    if (name && platform::text::trimmed(*name).empty()) name.reset();
    // While nobody knows the folders of a session that has some, it keeps the name it has from them.
    if (!name && (!areFoldersUnreadable_ || !work.folders.isEmpty()))
        change.derivedName = defaultName(work.folders.folders, now());
    if (name) change.nameAutoDerived = false;
    change.name = std::move(name);
    if (work.leavesClipsAlone) return change;
    change.counts = {static_cast<int>(groups.size()),
                     static_cast<int>(std::count_if(groups.begin(), groups.end(),
                                                    [](const SyncGroup& group) { return group.isLocked; }))};
    return change;
}

/// Folders are changed by choosing others: work without them does not take away those that the session has. A
/// bookmark, of another platform, goes with the path it was made of.
SessionManager::Work SessionManager::workOf(const ImportController& controller) const {
    Work work{
        .groups = controller.work().syncGroups(),
        .isEmptiedByEdit = controller.work().isEmptiedByEdit(),
        .folders = {.folders = knownFolders_},
        .wildTracks = {controller.work().sharedWildTracks(), knownWildTracks_},
    };
    const auto& video = controller.work().videoFolderURL();
    const auto& audio = controller.work().audioFolderURL();
    SessionFoldersChange& folders = work.folders;
    folders.hasVideo = video && video != knownFolders_.videoFolder;
    folders.hasAudio = audio && audio != knownFolders_.audioFolder;
    if (folders.hasVideo) {
        folders.folders.videoFolder = video;
        folders.folders.videoBookmark.reset();
    }
    if (folders.hasAudio) {
        folders.folders.audioFolder = audio;
        folders.folders.audioBookmark.reset();
    }
    const ScanScope& scope = controller.work().scanScope();
    folders.hasScope = !controller.work().folders().empty() && scope != knownFolders_.scope;
    if (folders.hasScope) folders.folders.scope = scope;
    const SourceCorrections corrections = controller.work().keptCorrections();
    const auto matchedBy = controller.work().keptMatchedBy();
    folders.hasCorrections =
        !controller.work().folders().empty() &&
        (corrections != knownFolders_.corrections || matchedBy != knownFolders_.matchedBy);
    if (folders.hasCorrections) {
        folders.folders.corrections = corrections;
        folders.folders.matchedBy = matchedBy;
    }
    return work;
}

SessionManager::Unwritten& SessionManager::change(const UUID& id, SessionInfoChange change) {
    change.modified = now();
    const SessionInfo* shown = session(id);
    Unwritten& unwritten = unwritten_[id];
    unwritten.info = shown != nullptr ? *shown : SessionInfo{.id = id, .created = *change.modified};
    unwritten.change.add(change);
    change.apply(unwritten.info);
    adopt(unwritten.info);
    return unwritten;
}

void SessionManager::adopt(SessionInfo info) {
    place(std::move(info));
    notify(SessionField::sessions);
}

/// Into the list, in order.
void SessionManager::place(SessionInfo info) {
    const auto found = std::ranges::find(sessions_, info.id, &SessionInfo::id);
    if (found == sessions_.end())
        sessions_.push_back(std::move(info));
    else
        *found = std::move(info);
    std::ranges::stable_sort(sessions_, std::ranges::greater{}, &SessionInfo::modified);
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
    scheduleTimer();
    startObservingSettingsChanges();
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
    if (!controller || !currentSessionId_ || isProjectOpening_) return;
    if (!isChanged && isDeletedByAnother()) {
        deletionProblem_ = "Another program has deleted this session; the next change saves it anew";
        return reportProblem();
    }
    Work work = workOf(*controller);
    work.leavesClipsAlone = work.groups.empty() && !work.isEmptiedByEdit;
    // Without clips there may be sound, which has names.
    if (!work.leavesClipsAlone || !controller->work().wildTracks().empty())
        save(std::move(work), std::nullopt);
}

/// And nothing of it waits to be written here.
bool SessionManager::isDeletedByAnother() const {
    const platform::MayBlock record;
    return !unwritten_.contains(*currentSessionId_) && store_.isDeleted(*currentSessionId_);
}

void SessionManager::scheduleTimer() {
    if (autosaveTimer_) autosaveTimer_->cancel();
    autosaveTimer_ = mainThread_->after(autosaveInterval, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->retryFailedWrites();
        self->writeFolderChanges();
        // Who waits for the saves so far would wait for ever where one takes longer than this.
        if (self->flushes_ == 0) self->autosaveIfNeeded();
        self->scheduleTimer();
    });
}

void SessionManager::resignActive() {
    assertOnMainThread();
    autosaveIfNeeded();
    if (autosaveTimer_) autosaveTimer_->cancel();
    autosaveTimer_.reset();
}

void SessionManager::becomeActive() {
    assertOnMainThread();
    scheduleTimer();
    autosaveIfNeeded();
}

// Opening.

void SessionManager::loadSessionList() {
    const platform::MayBlock record;
    assertOnMainThread();
    loadFolderInfos();
    sessions_ = store_.list();
    for (const auto& [id, unwritten] : unwritten_) {
        const SessionInfo* onDisk = session(id);
        SessionInfo info = onDisk != nullptr ? *onDisk : unwritten.info;
        unwritten.change.apply(info);
        place(std::move(info));
    }
    notify(SessionField::sessions);
}

struct SessionManager::Read {
    SessionStore::Groups groups;
    SessionStore::Stored<SessionFolders> folders;
    SessionStore::Stored<std::vector<WildTrack>> wildTracks;
    std::optional<std::string> infoProblem;
};

platform::Task SessionManager::load(UUID sessionId, const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    return open(weak_from_this(), sessionId, controller, ++openings_);
}

platform::Task SessionManager::open(std::weak_ptr<SessionManager> weak, UUID sessionId,
                                    std::weak_ptr<ImportController> controller, std::uint64_t opening) {
    auto self = weak.lock();
    {
        const platform::MayBlock record;
        if (!self->store_.exists(sessionId)) co_return;
    }
    self->leaveSession();
    self->loadFolderInfos();
    self->captureActiveSettingsSnapshot();
    self->writeNow(sessionId); // what is read must be the newest
    auto reading = platform::onQueue(*self->queue_, self->mainThread_, [store = self->store_, sessionId] {
        return Read{store.readGroups(sessionId), store.readFolders(sessionId),
                    store.readWildTracks(sessionId), store.readInfo(sessionId).problem};
    });
    self.reset();
    Read read = co_await reading;
    self = weak.lock();
    const auto work = controller.lock();
    if (!self || !work || self->openings_ != opening) co_return;
    self->leaveSession(); // what was edited meanwhile is saved where it belongs
    self->open(sessionId, std::move(read), *work);
}

void SessionManager::open(const UUID& sessionId, Read read, ImportController& controller) {
    queue_->post(
        [writer = groupsWriter_, sessionId, groups = read.groups] { writer->opened(sessionId, groups); });
    SessionFolders media = read.folders.record.value_or(SessionFolders{});
    const SessionFolders known = media;
    std::vector<WildTrack> wildTracks = std::move(read.wildTracks.record).value_or(std::vector<WildTrack>());
    const auto knownWildTracks = std::make_shared<const std::vector<WildTrack>>(wildTracks);
    if (const auto newer = unwritten_.find(sessionId); newer != unwritten_.end() && newer->second.work) {
        if (!newer->second.work->leavesClipsAlone)
            read.groups.groups = newer->second.work->groups; // which the disk would not take
        media = newer->second.work->folders.folders;
        if (const auto& tracks = newer->second.work->wildTracks.tracks) wildTracks = *tracks;
    }
    {
        const Restoring restoring(*this);
        controller.openStoredWork({media.videoFolder, media.audioFolder, std::move(read.groups.groups),
                                   std::move(wildTracks), media.scope, media.corrections, media.matchedBy});
    }
    const auto kept = std::exchange(keptWhileOpening_, {});
    setCurrentSession(sessionId);
    knownFolders_ = known;
    knownWildTracks_ = knownWildTracks;
    areFoldersUnreadable_ = read.folders.problem.has_value();
    for (const auto& problem :
         {read.infoProblem, read.folders.problem, read.wildTracks.problem, read.groups.problem})
        if (problem) openingProblem_ = openingProblem_ ? *openingProblem_ + "; " + *problem : *problem;
    reportProblem();
    reportKeptFiles(kept);
    const FolderInfo* folder = folderOfSession(sessionId);
    if (folder == nullptr || !folder->activeSettingsSnapshot) return;
    try {
        presetManager_.applySnapshot(*folder->activeSettingsSnapshot, *settings_);
    } catch (const std::runtime_error&) {
        // The settings stay as they are; the session is open all the same.
    }
}

platform::Task SessionManager::loadMostRecentSession(const std::shared_ptr<ImportController>& controller) {
    loadSessionList();
    return sessions_.empty() ? platform::Task::ended() : load(sessions_.front().id, controller);
}

platform::Task SessionManager::findSession(std::vector<FileURL> folders,
                                           std::shared_ptr<std::optional<UUID>> found) const {
    assertOnMainThread();
    std::vector<UUID> candidates;
    for (const SessionInfo& info : sessions_)
        if (info.groupCount > 0 && info.id != currentSessionId_) candidates.push_back(info.id);
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
    captureNowIfScheduled();
}

/// The clips of the work before may stand until those of the project do; they are kept where they belong.
void SessionManager::beginSessionOfProject() {
    ++openings_;
    autosaveIfNeeded();
    captureNowIfScheduled();
    setCurrentSession(UUID::random());
    isProjectOpening_ = true;
}

/// Or it was given up on the way. Not where another session was opened meanwhile.
void SessionManager::projectIsOpen() {
    if (!std::exchange(isProjectOpening_, false)) return;
    if (const auto controller = autosaveController_.lock()) save(*controller);
}

void SessionManager::setCurrentSession(std::optional<UUID> id) {
    const auto before = std::exchange(currentSessionId_, id);
    isProjectOpening_ = false;
    if (before && before != id && !unwritten_.contains(*before))
        queue_->post([writer = groupsWriter_, left = *before] { writer->closed(left); });
    knownFolders_ = {};
    knownWildTracks_.reset();
    areFoldersUnreadable_ = false;
    openingProblem_.reset();
    deletionProblem_.reset();
    keptProblem_.reset();
    reportProblem();
    notify(SessionField::currentSessionId);
}

/// Also of a session that was left: the texts name the file.
void SessionManager::reportKeptFiles(const std::vector<std::string>& kept) {
    if (kept.empty()) return;
    keptProblem_ = platform::text::joined(kept, "; ");
    reportProblem();
}

void SessionManager::reportProblem() {
    std::vector<std::string> parts;
    for (const auto& part : {folders_.readProblem(), openingProblem_, deletionProblem_, keptProblem_})
        if (part) parts.push_back(*part);
    const auto text = parts.empty() ? std::nullopt : std::optional(platform::text::joined(parts, "; "));
    if (problem_ == text) return;
    problem_ = text;
    notify(SessionField::problem);
}

// Names and places.

const SessionInfo* SessionManager::session(const UUID& sessionId) const {
    const auto found = std::ranges::find(sessions_, sessionId, &SessionInfo::id);
    return found == sessions_.end() ? nullptr : &*found;
}

bool SessionManager::keepsClipsFromElsewhere(const std::vector<FileURL>& folders) const {
    const SessionInfo* current = currentSessionId_ ? session(*currentSessionId_) : nullptr;
    if (current == nullptr || current->groupCount == 0) return false;
    return std::ranges::none_of(allFolders(knownFolders_), [&](const FileURL& known) {
        return std::ranges::any_of(folders, [&](const FileURL& folder) {
            return isFolderWithin(folder, known) || isFolderWithin(known, folder);
        });
    });
}

void SessionManager::rename(const UUID& sessionId, std::string name) {
    assertOnMainThread();
    if (session(sessionId) != nullptr)
        persistRecord(sessionId, {.name = std::move(name), .nameAutoDerived = false});
}

void SessionManager::setFolder(const UUID& sessionId, const std::optional<std::string>& folder) {
    assertOnMainThread();
    if (session(sessionId) == nullptr) return;
    std::optional<std::string> name(platform::text::trimmed(folder.value_or("")));
    if (name->empty()) name.reset();
    persistRecord(sessionId, {.folder = std::move(name)});
}

void SessionManager::deleteSession(UUID sessionId) {
    const platform::MayBlock record;
    assertOnMainThread();
    ++writeGeneration_[sessionId]; // writes on their way stop
    try {
        // Behind a write under way, which would otherwise make the folder anew.
        std::exception_ptr refused;
        queue_->sync([&] {
            try {
                store_.remove(sessionId);
            } catch (const platform::FileError&) {
                refused = std::current_exception();
            }
        });
        if (refused) std::rethrow_exception(refused);
    } catch (const platform::FileError&) {
        if (!store_.isDeleted(sessionId)) {
            if (unwritten_.contains(sessionId)) startWriting(sessionId);
            throw;
        }
    }
    unwritten_.erase(sessionId);
    failures_.erase(sessionId);
    queue_->post([writer = groupsWriter_, sessionId] { writer->closed(sessionId); });
    reportFailures();
    if (currentSessionId_ == sessionId) {
        ++openings_;
        setCurrentSession(std::nullopt);
        // Clips that stayed would be work that nothing saves.
        if (const auto controller = autosaveController_.lock()) controller->reset();
    }
    loadSessionList();
}

bool SessionManager::exists(const UUID& sessionId) const {
    const platform::MayBlock record;
    return session(sessionId) != nullptr || store_.exists(sessionId);
}

std::optional<std::string> SessionManager::suggestedSessionName(const UUID& sessionId) const {
    const SessionInfo* named = session(sessionId);
    if (named == nullptr || !named->folder || named->folder->empty()) return std::nullopt;
    std::int64_t highest = 0;
    for (const SessionInfo& other : sessions_) {
        if (other.id == sessionId || other.folder != named->folder) continue;
        const std::int64_t number = shootingDayNumber(other.name).value_or(0);
        if (number < std::numeric_limits<std::int64_t>::max()) highest = std::max(highest, number);
    }
    constexpr std::size_t digits = 3;
    std::string next = std::to_string(highest + 1);
    next.insert(0, digits - std::min(digits, next.size()), '0');
    return *named->folder + " DT " + next;
}

} // namespace orvane
