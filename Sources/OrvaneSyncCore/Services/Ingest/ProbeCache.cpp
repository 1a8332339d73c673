#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/FileLock.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

constexpr const char* queueLabel = "com.orvanelabs.OrvaneSync.ProbeCache";
constexpr const char* fileName = "probe-cache.bin";
/// The file of earlier versions, in the same folder: a JSON object with an entry for each path.
constexpr const char* earlierFileName = "probe-cache.json";
constexpr std::uint32_t earlierReaderVersion = 0;
constexpr std::chrono::seconds saveDelay{1};

std::string earlierPath(const std::string& path) {
    return (std::filesystem::path(path).parent_path() / earlierFileName).string();
}

void removeIfThere(const std::string& path) {
    try {
        platform::files::remove(path);
    } catch (const platform::FileError&) {
        // It does not exist, or cannot be removed; then the next save tries again.
    }
}

/// The record of an entry without its asset, as the versions that wrote it read less than this one. Empty for
/// an entry of another form.
std::string recordOfEarlierForm(const FileURL& url, const platform::JSONView& entry) {
    try {
        const platform::JSONView asset = requiredMember(entry, "asset");
        ProbeRecord record;
        record.path = url.path;
        record.modificationSinceReference = required<double>(entry, "modificationDate");
        record.size = required<std::int64_t>(entry, "fileSize");
        record.readerVersion = earlierReaderVersion;
        record.id = required<UUID>(asset, "id");
        record.kind = required<AssetKind>(asset, "kind");
        return record.bytes();
    } catch (const DecodingError&) {
        return {};
    }
}

/// Files that were removed from a folder which still has other files. If the folder is empty, its card may
/// just not be mounted.
class VanishedFiles {
  public:
    bool contains(const std::string& path) {
        const std::string folder = platform::files::folderOf(path);
        auto names = folders_.find(folder);
        if (names == folders_.end()) {
            const auto present = platform::files::childNames(folder).value_or(std::vector<std::string>());
            names = folders_.emplace(folder, std::set(present.begin(), present.end())).first;
        }
        return !names->second.empty() &&
               !names->second.contains(std::filesystem::path(path).filename().string());
    }

  private:
    std::map<std::string, std::set<std::string>> folders_; ///< the names in each folder
};

} // namespace

ProbeCache::ProbeCache(std::string path)
    : ProbeCache(std::move(path), platform::SerialQueue::create(queueLabel)) {}

ProbeCache::ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue,
                       std::uint32_t readerVersion)
    : path_(std::move(path)), readerVersion_(readerVersion), queue_(std::move(queue)) {
    queue_->post([this] { load(); });
}

std::string ProbeCache::sharedPath() { return AppStorageHelper::probeCacheDirectory() + "/" + fileName; }

std::shared_ptr<ProbeCache> ProbeCache::shared() {
    static std::mutex mutex;
    static std::weak_ptr<ProbeCache> held;
    const std::lock_guard lock(mutex);
    auto cache = held.lock();
    if (!cache) held = cache = std::make_shared<ProbeCache>(sharedPath());
    return cache;
}

void ProbeCache::load() {
    readFile();
    if (!seen_) loadEarlierForm();
}

/// The attributes are read first: if the file is replaced meanwhile, the next comparison shows a difference.
void ProbeCache::readFile() {
    loaded_.reset();
    seen_ = platform::files::attributes(path_);
    if (!seen_) return;
    try {
        loaded_ = ProbeCacheFile::fromBytes(platform::files::readText(path_, ProbeCacheFile::mostBytes));
    } catch (const platform::FileError&) {
        // All files are probed again.
    }
}

void ProbeCache::takeWhatOthersWrote() {
    const auto there = platform::files::attributes(path_);
    const auto mark = [](const std::optional<platform::FileAttributes>& file) {
        return file ? std::tuple(file->identity, file->size, file->modificationSinceReference)
                    : std::tuple<decltype(file->identity), std::int64_t, double>();
    };
    if (mark(there) != mark(seen_)) readFile();
}

void ProbeCache::loadEarlierForm() {
    try {
        std::string text = platform::files::readText(earlierPath(path_));
        platform::JSONParser parser;
        platform::forEachRecord(text, [&](std::string_view key, std::string_view entry) {
            const auto url = FileURL::fromPathText(key);
            if (!url) return;
            if (auto record = recordOfEarlierForm(*url, parser.parse(entry)); !record.empty())
                stored_->insert_or_assign(url->path, std::move(record));
        });
    } catch (const platform::FileError&) {
        // Nothing is cached yet.
    } catch (const platform::JSONError&) {
        stored_->clear();
    }
}

ProbeCache::Snapshot ProbeCache::snapshot() {
    Snapshot result;
    result.readerVersion_ = readerVersion_;
    queue_->sync([&] {
        result.loaded_ = loaded_;
        result.stored_ = stored_;
    });
    return result;
}

std::optional<ProbeRecord> ProbeCache::Snapshot::find(const std::string& path) const {
    if (const auto entry = stored_->find(path); entry != stored_->end())
        return ProbeRecord::fromBytes(entry->second);
    return loaded_ ? loaded_->find(path) : std::nullopt;
}

std::optional<ProbeCache::Known>
ProbeCache::Snapshot::known(const FileURL& url, const platform::FileAttributes& attributes) const {
    const auto record = find(url.path);
    if (!record || !record->isOf(attributes)) return std::nullopt;
    std::optional known(Known{record->id, record->kind, std::nullopt});
    if (record->readerVersion == readerVersion_) known->asset = decodedAsset(*record);
    return known;
}

std::optional<MediaAsset> ProbeCache::lookup(const FileURL& url) {
    const auto attributes = platform::files::attributes(url.path);
    auto known = attributes ? snapshot().known(url, *attributes) : std::nullopt;
    return known ? std::move(known->asset) : std::nullopt;
}

void ProbeCache::store(const MediaAsset& asset) {
    if (const auto attributes = platform::files::attributes(asset.url.path)) store(asset, *attributes);
}

void ProbeCache::store(const MediaAsset& asset, const platform::FileAttributes& attributes) {
    const std::string body = encodedAsset(asset);
    const ProbeRecord record{asset.url.path,
                             attributes.modificationSinceReference,
                             attributes.size,
                             readerVersion_,
                             asset.id,
                             asset.kind,
                             body};
    queue_->post([this, path = asset.url.path, bytes = record.bytes()]() mutable {
        // A snapshot that is in use must not change.
        if (stored_.use_count() > 1) stored_ = std::make_shared<Snapshot::Records>(*stored_);
        stored_->insert_or_assign(std::move(path), std::move(bytes));
        changed_ = true;
        scheduleSave();
    });
}

void ProbeCache::scheduleSave() {
    if (saveScheduled_) return;
    saveScheduled_ = true;
    queue_->after(saveDelay, [this] {
        saveScheduled_ = false;
        write();
    });
}

/// Entries that were loaded and not stored again are written unchanged, so that files which were not asked
/// for stay cached. An entry is dropped if its file was removed from its folder, but not if its card is not
/// mounted.
std::vector<std::string> ProbeCache::records() const {
    std::vector<std::string> result;
    VanishedFiles vanished;
    for (std::size_t i = 0; loaded_ && i < loaded_->count(); ++i) {
        const auto record = loaded_->record(i);
        if (!record) continue;
        const std::string path(record->path);
        if (!stored_->contains(path) && !vanished.contains(path)) result.push_back(record->bytes());
    }
    for (const auto& [path, bytes] : *stored_) result.push_back(bytes);
    return result;
}

void ProbeCache::write() {
    if (!changed_) return;
    // Writing to something else at this path, such as a named pipe, could block for ever.
    if (const auto there = platform::files::attributes(path_); there && !there->isRegularFile) return;
    try {
        const std::string folder = std::filesystem::path(path_).parent_path().string();
        platform::files::createDirectories(folder);
        const auto lock = platform::FileLock::ofFolder(folder);
        takeWhatOthersWrote();
        platform::files::writeAtomically(path_, ProbeCacheFile::bytes(records()));
        seen_ = platform::files::attributes(path_);
        changed_ = false;
        removeIfThere(earlierPath(path_));
    } catch (const platform::FileError&) {
        // The entries stay in memory, and the next save tries again.
    }
}

void ProbeCache::clear() {
    queue_->sync([this] {
        loaded_.reset();
        stored_ = std::make_shared<Snapshot::Records>();
        changed_ = false;
        removeIfThere(path_);
        removeIfThere(earlierPath(path_));
    });
}

std::size_t ProbeCache::count() {
    std::size_t result = 0;
    queue_->sync([&] { result = records().size(); });
    return result;
}

std::int64_t ProbeCache::sizeBytes() {
    std::int64_t result = 0;
    queue_->sync([&] {
        if (const auto file = platform::files::attributes(path_)) result = file->size;
    });
    return result;
}

} // namespace orvane
