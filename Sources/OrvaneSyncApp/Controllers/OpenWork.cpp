#include "OrvaneSyncApp/Controllers/OpenWork.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

int count(const SyncGroupList& groups, bool (*test)(const SyncGroup&)) {
    return static_cast<int>(std::count_if(groups.begin(), groups.end(), test));
}

bool isSettled(const SyncGroup& group) { return group.matchStatus.isSettled(); }

} // namespace

OpenWork::OpenWork(Environment theEnvironment)
    : environment(std::move(theEnvironment)), notices(environment.mainThread, syncGroups_),
      documents(platform::SerialQueue::create("documents")) {}

void OpenWork::notify(ImportField field) {
    if (field == ImportField::syncGroups) clipsByAudio_.reset();
    if (field == ImportField::syncGroups || field == ImportField::wildTracks) fileNames_.reset();
    notices.notify(field);
}

void OpenWork::setVideoFolderURL(std::optional<FileURL> folder) {
    videoFolderURL_ = std::move(folder);
    notify(ImportField::videoFolderURL);
}

void OpenWork::setAudioFolderURL(std::optional<FileURL> folder) {
    audioFolderURL_ = std::move(folder);
    notify(ImportField::audioFolderURL);
}

void OpenWork::setSourceCorrections(SourceCorrections corrections) {
    if (corrections == sourceCorrections_) return;
    sourceCorrections_ = std::move(corrections);
    notify(ImportField::sourceCorrections);
}

void OpenWork::setScanScope(ScanScope scope) {
    scanScope_ = std::move(scope);
    notify(ImportField::scanScope);
}

std::vector<FileURL> OpenWork::folders() const {
    std::vector<FileURL> all;
    const auto add = [&](const FileURL& folder) {
        if (std::ranges::find(all, folder) == all.end()) all.push_back(folder);
    };
    if (videoFolderURL_) add(*videoFolderURL_);
    if (audioFolderURL_) add(*audioFolderURL_);
    std::ranges::for_each(scanScope_.moreFolders, add);
    return all;
}

int OpenWork::matchedCount() const { return count(syncGroups_, isSettled); }

int OpenWork::unmatchedCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return !isSettled(group); });
}

int OpenWork::syncClipCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return isSettled(group) && !group.isMOS(); });
}

int OpenWork::mosCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return isSettled(group) && group.isMOS(); });
}

std::map<UUID, std::string> OpenWork::displayNames() const {
    notices.assertOnMainThread();
    const platform::SettingsStore& store = *environment.settings;
    const auto source = store.get(settings::clipNamingSource);
    const std::optional<std::string> pattern = store.get(settings::customNamingPattern);
    std::vector<std::string> texts =
        ClipNames::of(syncGroups_, source, pattern, store.get(settings::namingSeparator));
    std::map<UUID, std::string> names;
    for (std::size_t i = 0; i < syncGroups_.size(); ++i)
        names[syncGroups_[i].id] = GroupNaming::appendingOffspeedTag(std::move(texts[i]), syncGroups_[i]);
    return names;
}

const FileNames& OpenWork::fileNames() const {
    notices.assertOnMainThread();
    if (!fileNames_) {
        fileNames_.emplace();
        for (const SyncGroup& group : syncGroups_) {
            fileNames_->add(group.video);
            for (const AudioMatch& match : group.audioMatches) fileNames_->add(match.audio);
        }
        for (const WildTrack& track : wildTracks_) fileNames_->add(track.audio);
    }
    return *fileNames_;
}

const std::vector<std::size_t>& OpenWork::clipsUsing(const UUID& audioID) const {
    notices.assertOnMainThread();
    if (!clipsByAudio_) {
        clipsByAudio_.emplace();
        for (std::size_t position = 0; position < syncGroups_.size(); ++position)
            for (const AudioMatch& match : syncGroups_[position].audioMatches) {
                auto& clips = (*clipsByAudio_)[match.audio->id];
                if (clips.empty() || clips.back() != position) clips.push_back(position);
            }
    }
    static const std::vector<std::size_t> none;
    const auto found = clipsByAudio_->find(audioID);
    return found == clipsByAudio_->end() ? none : found->second;
}

const SyncGroup* OpenWork::unlockedGroup(const UUID& groupID) const {
    notices.assertOnMainThread();
    const SyncGroup* group = syncGroups_.find(groupID);
    return group != nullptr && !group->isLocked ? group : nullptr;
}

bool OpenWork::edit(UUID groupID, const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    if (!syncGroups_.update(groupID, change)) return false;
    notify(ImportField::syncGroups);
    return true;
}

void OpenWork::editWhere(const std::function<bool(const SyncGroup&)>& test,
                         const std::function<void(SyncGroup&)>& change) {
    notices.assertOnMainThread();
    if (syncGroups_.updateWhere(test, change) > 0) notify(ImportField::syncGroups);
}

void OpenWork::changeClips(const std::function<void(SyncGroupList&)>& change) {
    notices.assertOnMainThread();
    change(syncGroups_);
    notify(ImportField::syncGroups);
}

void OpenWork::changeWildTracks(const std::function<void(std::vector<WildTrack>&)>& change) {
    notices.assertOnMainThread();
    change(wildTracks_);
    notify(ImportField::wildTracks);
}

void OpenWork::replace(SyncGroupList groups, std::vector<WildTrack> wildTracks) {
    notices.together([&] {
        syncGroups_ = std::move(groups);
        syncGroups_.makeIndex();
        isEmptiedByEdit_ = false;
        wildTracks_ = std::move(wildTracks);
        notify(ImportField::syncGroups);
        notify(ImportField::wildTracks);
    });
}

void OpenWork::withUndo(const UndoStep& step, const std::function<void()>& mutation) {
    notices.together([&] {
        if (undoStack_.begin(step, syncGroups_, environment.clock->now())) notify(ImportField::undoState);
        const bool wasEmpty = syncGroups_.empty();
        mutation();
        if (!wasEmpty) isEmptiedByEdit_ = syncGroups_.empty();
    });
}

void OpenWork::travel(UndoTravel direction) {
    notices.together([&] {
        const bool wasEmpty = syncGroups_.empty();
        if (!(undoStack_.*direction)(syncGroups_, environment.clock->now())) return;
        // A list without clips is the editor's where the step forward took them out; before the first step it
        // is that of work that was not there yet.
        if (wasEmpty) isEmptinessRedone_ = isEmptiedByEdit_;
        isEmptiedByEdit_ =
            syncGroups_.empty() && direction == &UndoStack<SyncGroupList>::redo && isEmptinessRedone_;
        syncGroups_.makeIndex();
        notify(ImportField::syncGroups);
        if (whenTakenBack) whenTakenBack();
        notify(ImportField::undoState);
    });
}

void OpenWork::clearUndo() {
    undoStack_.removeAllActions();
    notify(ImportField::undoState);
}

} // namespace orvane
