#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <mutex>
#include <utility>

namespace orvane {

namespace {

constexpr const char* queueLabel = "com.orvanelabs.OrvaneSync.ProbeCache";
constexpr const char* fileName = "probe-cache.json";
constexpr std::chrono::seconds saveDelay{1};
/// Some file systems keep coarser dates than others, and a copy of a file rounds its date.
constexpr double dateTolerance = 1.0; // seconds

bool isOf(const platform::JSONView& entry, const platform::FileAttributes& file) {
    const auto date = required<double>(entry, "modificationDate");
    return std::abs(file.modificationSinceReference - date) < dateTolerance &&
           required<std::int64_t>(entry, "fileSize") == file.size;
}

} // namespace

ProbeCache::ProbeCache(std::string path)
    : ProbeCache(std::move(path), platform::SerialQueue::create(queueLabel)) {}

ProbeCache::ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue)
    : path_(std::move(path)), queue_(std::move(queue)) {
    queue_->post([this] { load(); });
}

std::shared_ptr<ProbeCache> ProbeCache::shared() {
    static std::mutex mutex;
    static std::weak_ptr<ProbeCache> held;
    const std::lock_guard lock(mutex);
    auto cache = held.lock();
    if (!cache)
        held = cache = std::make_shared<ProbeCache>(AppStorageHelper::probeCacheDirectory() + "/" + fileName);
    return cache;
}

void ProbeCache::load() {
    try {
        auto text = std::make_shared<std::string>(platform::files::readText(path_));
        platform::forEachRecord(*text, [&](std::string_view key, std::string_view record) {
            Candidate& entry = entries_[std::string(key)];
            entry.text_ = text;
            entry.record_ = record;
        });
        loaded_ = std::move(text);
    } catch (const platform::FileError&) {
        // Nothing was kept so far.
    } catch (const platform::JSONError&) {
        entries_.clear();
    }
}

std::vector<ProbeCache::Candidate> ProbeCache::candidates(const std::vector<FileURL>& urls) {
    std::vector<Candidate> result(urls.size());
    queue_->sync([&] {
        for (std::size_t i = 0; i < urls.size(); ++i)
            if (const auto found = entries_.find(urls[i].pathText()); found != entries_.end())
                result[i] = found->second;
    });
    return result;
}

std::optional<MediaAsset> ProbeCache::resolve(const Candidate& candidate,
                                              const std::optional<platform::FileAttributes>& attributes) {
    if (candidate.record_.empty() || !attributes) return std::nullopt;
    thread_local platform::JSONParser parser;
    try {
        const platform::JSONView entry = parser.parse(candidate.record_);
        if (!isOf(entry, *attributes)) return std::nullopt;
        return required<MediaAsset>(entry, "asset");
    } catch (const platform::JSONError&) {
        forgetLoaded(candidate.text_);
    } catch (const DecodingError&) {
        forgetLoaded(candidate.text_);
    }
    return std::nullopt;
}

std::optional<MediaAsset> ProbeCache::lookup(const FileURL& url) {
    return resolve(candidates({url}).front(), platform::files::attributes(url.path));
}

/// Where one record cannot be decoded, the file comes from another build, and none of it counts. It is
/// written anew without them, or the same record would empty the cache in every run.
void ProbeCache::forgetLoaded(const std::shared_ptr<const std::string>& text) {
    queue_->post([this, text] {
        if (loaded_ != text) return;
        loaded_.reset();
        std::erase_if(entries_, [&text](const auto& entry) { return entry.second.text_ == text; });
        changed_ = true;
        scheduleSave();
    });
}

void ProbeCache::store(const MediaAsset& asset) {
    if (const auto attributes = platform::files::attributes(asset.url.path)) store(asset, *attributes);
}

void ProbeCache::store(const MediaAsset& asset, const platform::FileAttributes& attributes) {
    JSON record;
    record.set("asset", toJSON(asset));
    record.set("modificationDate", attributes.modificationSinceReference);
    record.set("fileSize", attributes.size);
    Candidate entry;
    entry.text_ = std::make_shared<const std::string>(record.dump());
    entry.record_ = *entry.text_;
    // A value that JSON cannot hold would make the file unreadable for the next run.
    if (!resolve(entry, attributes)) return;
    queue_->post([this, key = asset.url.pathText(), entry = std::move(entry)] {
        entries_[key] = entry;
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

void ProbeCache::write() {
    if (!changed_) return;
    // Where something else stands at the path, such as a named pipe, a write could wait for ever.
    if (const auto there = platform::files::attributes(path_); there && !there->isRegularFile) return;
    try {
        platform::files::createDirectories(std::filesystem::path(path_).parent_path().string());
        platform::files::writeAtomically(path_, encoded());
        changed_ = false;
    } catch (const platform::FileError&) {
        // The entries stay, and the next save tries again.
    }
}

/// The records as they are, one a line.
std::string ProbeCache::encoded() const {
    std::vector<const std::pair<const std::string, Candidate>*> sorted;
    sorted.reserve(entries_.size());
    std::size_t size = 0;
    constexpr std::size_t punctuation = 8;
    for (const auto& entry : entries_) {
        sorted.push_back(&entry);
        size += entry.first.size() + entry.second.record_.size() + punctuation;
    }
    std::ranges::sort(sorted, {}, [](const auto* entry) -> const std::string& { return entry->first; });
    std::string text;
    text.reserve(size);
    for (const auto* entry : sorted) {
        text += text.empty() ? "{\n" : ",\n";
        text += JSON(entry->first).dump();
        text += ':';
        text += entry->second.record_;
    }
    text += text.empty() ? "{}\n" : "\n}\n";
    return text;
}

void ProbeCache::clear() {
    queue_->sync([this] {
        entries_.clear();
        loaded_.reset();
        changed_ = false;
        try {
            platform::files::remove(path_);
        } catch (const platform::FileError&) {
            // It was not there, or it cannot be removed; then the next save replaces it.
        }
    });
}

std::size_t ProbeCache::count() {
    std::size_t result = 0;
    queue_->sync([&] { result = entries_.size(); });
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
