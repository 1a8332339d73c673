#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <utility>

namespace orvane {

namespace {

constexpr std::chrono::seconds autosaveInterval{5};

std::string dayText(Date date) {
    const auto local = calendar::fields(date);
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02d.%02d.%04d", local.day, local.month, local.year);
    return text.data();
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
      sessions_(store_.list()), folderInfos_(store_.readFolderInfos()),
      groupsWriter_(std::make_shared<SessionGroupsWriter>(store_)),
      queue_(platform::SerialQueue::create("sessions")) {}

SessionManager::~SessionManager() {
    listeners_.clear();
    saveScheduledChanges();
    captureNowIfScheduled();
    writeUnwritten();
}

void SessionManager::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

void SessionManager::notify(SessionField field) {
    std::erase_if(listeners_, [](const auto& listener) { return listener.expired(); });
    const auto listeners = listeners_; // a listener may subscribe or unsubscribe
    for (const auto& listener : listeners)
        if (const auto callback = listener.lock()) (*callback)(field);
}

platform::Subscription SessionManager::onChange(std::function<void(SessionField)> callback) {
    assertOnMainThread();
    auto listener = std::make_shared<std::function<void(SessionField)>>(std::move(callback));
    listeners_.push_back(listener);
    return listener;
}

// Saving.

platform::Task SessionManager::save(const ImportController& controller, std::optional<std::string> name) {
    assertOnMainThread();
    if (!currentSessionId_) return finishWrites({}); // nothing to wait for
    const UUID id = *currentSessionId_;
    try {
        store_.create(id);
    } catch (const platform::FileError&) {
        // Writing into it fails with a reason of its own.
    }
    SessionInfo info = nextInfo(id, controller, std::move(name));
    unwritten_[id] = std::make_shared<const Unwritten>(
        Unwritten{controller.syncGroups(),
                  {controller.videoFolderURL(), controller.audioFolderURL(), std::nullopt, std::nullopt},
                  info});
    auto writing = startWriting(id);
    adopt(std::move(info));
    return writing;
}

SessionInfo SessionManager::nextInfo(const UUID& id, const ImportController& controller,
                                     std::optional<std::string> name) const {
    const Date moment = now();
    const SessionInfo* existing = session(id);
    SessionInfo info;
    if (existing != nullptr) info = *existing;
    info.id = id;
    if (name)
        info.name = std::move(*name);
    else if (info.nameAutoDerived)
        info.name = defaultName(controller);
    if (existing == nullptr) info.created = moment;
    info.modified = moment;
    const SyncGroupList& groups = controller.syncGroups();
    info.groupCount = static_cast<int>(groups.size());
    info.lockedCount = static_cast<int>(
        std::count_if(groups.begin(), groups.end(), [](const SyncGroup& group) { return group.isLocked; }));
    return info;
}

std::string SessionManager::defaultName(const ImportController& controller) const {
    for (const auto* folder : {&controller.videoFolderURL(), &controller.audioFolderURL()}) {
        if (!*folder) continue;
        std::string name = (*folder)->lastPathComponent();
        if (!name.empty()) return name;
    }
    return "Session " + dayText(now());
}

/// Into the list, at once and in order.
void SessionManager::adopt(SessionInfo info) {
    const auto found = std::ranges::find(sessions_, info.id, &SessionInfo::id);
    if (found == sessions_.end())
        sessions_.push_back(std::move(info));
    else
        *found = std::move(info);
    std::ranges::stable_sort(sessions_, std::ranges::greater{}, &SessionInfo::modified);
    notify(SessionField::sessions);
}

void SessionManager::start(const std::shared_ptr<ImportController>& controller) {
    assertOnMainThread();
    if (std::exchange(isStarted_, true)) return;
    autosaveController_ = controller;
    controllerObservation_ = controller->onChange([this](ImportField field) {
        if (field == ImportField::syncGroups || field == ImportField::videoFolderURL ||
            field == ImportField::audioFolderURL)
            scheduleSave();
    });
    scheduleTimer();
    startObservingSettingsChanges();
}

/// One save for all the changes of a turn of the run loop.
void SessionManager::scheduleSave() {
    if (isRestoring_ || std::exchange(isSaveScheduled_, true)) return;
    mainThread_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->saveScheduledChanges();
    });
}

void SessionManager::saveScheduledChanges() {
    if (isSaveScheduled_) autosaveIfNeeded();
}

/// Nothing empty is saved by itself: work that is left behind, and clips that could not be read, stay what
/// they are on the disk.
void SessionManager::autosaveIfNeeded() {
    isSaveScheduled_ = false;
    const auto controller = autosaveController_.lock();
    if (controller && currentSessionId_ && !controller->syncGroups().empty()) save(*controller);
}

void SessionManager::scheduleTimer() {
    if (autosaveTimer_) autosaveTimer_->cancel();
    autosaveTimer_ = mainThread_->after(autosaveInterval, [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->retryFailedWrites();
        self->autosaveIfNeeded();
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
    assertOnMainThread();
    sessions_ = store_.list();
    notify(SessionField::sessions);
}

void SessionManager::load(UUID sessionId, ImportController& controller) {
    assertOnMainThread();
    if (!store_.exists(sessionId)) return;
    leaveSession();
    captureActiveSettingsSnapshot();
    keptAtOpening_.reset();
    writeNow(sessionId); // what is read must be the newest
    auto read = store_.readGroups(sessionId);
    SessionFolders folders = store_.readFolders(sessionId).value_or(SessionFolders{});
    queue_->post([writer = groupsWriter_, sessionId, read] { writer->opened(sessionId, read); });
    if (const auto newer = unwritten_.find(sessionId); newer != unwritten_.end()) {
        read.groups = newer->second->groups; // which the disk would not take
        folders = newer->second->folders;
    }
    {
        const Restoring restoring(*this);
        controller.openStoredWork({folders.videoFolder, folders.audioFolder, std::move(read.groups)});
    }
    setCurrentSession(sessionId);
    if (auto problem = read.problem ? std::move(read.problem) : std::move(keptAtOpening_)) {
        problem_ = std::move(problem);
        notify(SessionField::problem);
    }
    const FolderInfo* folder = folderOfSession(sessionId);
    if (folder == nullptr || !folder->activeSettingsSnapshot) return;
    try {
        presetManager_.applySnapshot(*folder->activeSettingsSnapshot, *settings_);
    } catch (const std::runtime_error&) {
        // The settings stay as they are; the session is open all the same.
    }
}

void SessionManager::loadMostRecentSession(ImportController& controller) {
    loadSessionList();
    if (!sessions_.empty()) load(sessions_.front().id, controller);
}

platform::Task SessionManager::newSession(ImportController& controller) {
    assertOnMainThread();
    leaveSession();
    {
        const Restoring restoring(*this);
        controller.openStoredWork({});
    }
    setCurrentSession(UUID::random());
    return save(controller);
}

/// What of the open session waits for a moment of its own happens now.
void SessionManager::leaveSession() {
    saveScheduledChanges();
    captureNowIfScheduled();
}

void SessionManager::setCurrentSession(std::optional<UUID> id) {
    const auto before = std::exchange(currentSessionId_, id);
    if (before && before != id && !unwritten_.contains(*before))
        queue_->post([writer = groupsWriter_, left = *before] { writer->closed(left); });
    if (std::exchange(problem_, std::nullopt)) notify(SessionField::problem);
    notify(SessionField::currentSessionId);
}

// Names and places.

const SessionInfo* SessionManager::session(const UUID& sessionId) const {
    const auto found = std::ranges::find(sessions_, sessionId, &SessionInfo::id);
    return found == sessions_.end() ? nullptr : &*found;
}

void SessionManager::rename(const UUID& sessionId, std::string name) {
    assertOnMainThread();
    const SessionInfo* existing = session(sessionId);
    if (existing == nullptr) return;
    SessionInfo info = *existing;
    info.name = std::move(name);
    info.nameAutoDerived = false;
    persistRecord(std::move(info));
}

void SessionManager::setFolder(const UUID& sessionId, const std::optional<std::string>& folder) {
    assertOnMainThread();
    const SessionInfo* existing = session(sessionId);
    if (existing == nullptr) return;
    SessionInfo info = *existing;
    info.folder = folder;
    if (folder) info.folder = std::string(platform::text::trimmed(*folder));
    if (info.folder == "") info.folder.reset();
    persistRecord(std::move(info));
}

void SessionManager::deleteSession(UUID sessionId) {
    assertOnMainThread();
    unwritten_.erase(sessionId);
    failures_.erase(sessionId);
    ++writeGeneration_[sessionId]; // writes on their way stop
    try {
        store_.remove(sessionId);
    } catch (const platform::FileError&) {
        // What is still there is still listed.
    }
    queue_->post([writer = groupsWriter_, sessionId] { writer->closed(sessionId); });
    if (currentSessionId_ == sessionId) setCurrentSession(std::nullopt);
    loadSessionList();
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
    std::array<char, 32> next{};
    std::snprintf(next.data(), next.size(), "%03lld", static_cast<long long>(highest + 1));
    return *named->folder + " DT " + next.data();
}

} // namespace orvane
