#include "OrvaneSyncApp/Controllers/ImportController.h"

#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Services/Persistence/SettingsReader.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace orvane {

namespace {

int count(const SyncGroupList& groups, bool (*test)(const SyncGroup&)) {
    return static_cast<int>(std::count_if(groups.begin(), groups.end(), test));
}

bool isSettled(const SyncGroup& group) { return group.matchStatus.isSettled(); }

} // namespace

std::shared_ptr<ImportController> ImportController::create(Dependencies dependencies) {
    return std::shared_ptr<ImportController>(new ImportController(std::move(dependencies)));
}

ImportController::ImportController(Dependencies dependencies)
    : mainThread_(std::move(dependencies.mainThread)), settings_(std::move(dependencies.settings)),
      clock_(std::move(dependencies.clock)),
      probeService_(std::make_shared<MediaProbeService>(settings_, std::move(dependencies.probeCache))),
      serviceQueue_(platform::SerialQueue::create("services")),
      smartAudioRouter_(std::make_unique<SmartAudioRouter>()),
      loudnessQueue_(platform::SerialQueue::create("loudness")) {}

ImportController::~ImportController() = default;

void ImportController::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

void ImportController::notify(ImportField field) {
    if (field == ImportField::syncGroups) clipsByAudio_.reset();
    if (field == ImportField::syncGroups || field == ImportField::wildTracks) fileNames_.reset();
    if (changesUnderWay_ > 0) {
        if (std::ranges::find(untold_, field) == untold_.end()) untold_.push_back(field);
        return;
    }
    listeners_.tell(field);
}

platform::Subscription ImportController::onChange(std::function<void(ImportField)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
}

void ImportController::setVideoFolderURL(std::optional<FileURL> folder) {
    set(videoFolderURL_, std::move(folder), ImportField::videoFolderURL);
}

void ImportController::setAudioFolderURL(std::optional<FileURL> folder) {
    set(audioFolderURL_, std::move(folder), ImportField::audioFolderURL);
}

int ImportController::matchedCount() const { return count(syncGroups_, isSettled); }

int ImportController::unmatchedCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return !isSettled(group); });
}

int ImportController::syncClipCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return isSettled(group) && !group.isMOS(); });
}

int ImportController::mosCount() const {
    return count(syncGroups_, [](const SyncGroup& group) { return isSettled(group) && group.isMOS(); });
}

std::map<UUID, std::string> ImportController::displayNames() const {
    assertOnMainThread();
    const SettingsReader settings(*settings_);
    const auto source = GroupNaming::sourceFrom(settings.text("clipNamingSource"));
    const std::optional<std::string> pattern = settings.text("customNamingPattern");
    std::vector<std::string> texts =
        ClipNames::of(syncGroups_, source, pattern, settings.text("namingSeparator"));
    std::map<UUID, std::string> names;
    for (std::size_t i = 0; i < syncGroups_.size(); ++i)
        names[syncGroups_[i].id] = GroupNaming::appendingOffspeedTag(std::move(texts[i]), syncGroups_[i]);
    return names;
}

const FileNames& ImportController::fileNames() const {
    assertOnMainThread();
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

} // namespace orvane
