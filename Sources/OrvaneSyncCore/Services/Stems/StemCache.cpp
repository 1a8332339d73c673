#include "OrvaneSyncCore/Services/Stems/StemCache.h"

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "Platform/FileUse.h"
#include "Platform/Files.h"
#include "Platform/ReferenceDate.h"
#include "Platform/SHA256.h"
#include "Platform/Stop.h"

#include <chrono>
#include <utility>

namespace orvane {

namespace {

namespace files = platform::files;
using Folder = RenderedAudioStore::Folder;

constexpr const char* metaName = "meta.json";

SeparatedStems stemsIn(const std::string& folder) {
    return {
        {folder + "/" + dialogueStemName}, {folder + "/" + musicStemName}, {folder + "/" + effectsStemName}};
}

/// Removes a key from those in progress, however the separation ends.
class SeparationUnderWay {
  public:
    SeparationUnderWay(std::mutex& mutex, std::condition_variable& ended, std::set<std::string>& keys,
                       std::string key)
        : mutex_(mutex), ended_(ended), keys_(keys), key_(std::move(key)) {}
    ~SeparationUnderWay() {
        const std::lock_guard lock(mutex_);
        keys_.erase(key_);
        ended_.notify_all();
    }
    SeparationUnderWay(const SeparationUnderWay&) = delete;
    SeparationUnderWay& operator=(const SeparationUnderWay&) = delete;

  private:
    std::mutex& mutex_;
    std::condition_variable& ended_;
    std::set<std::string>& keys_;
    const std::string key_;
};

} // namespace

StemCache::StemCache(std::shared_ptr<AudioStemSeparator> separator,
                     std::shared_ptr<const RenderedAudioStore> store)
    : separator_(std::move(separator)), store_(std::move(store)) {}

std::shared_ptr<StemCache> StemCache::bySettings(const platform::SettingsStore& settings,
                                                 std::shared_ptr<const RenderedAudioStore> store) {
    std::shared_ptr<AudioStemSeparator> separator;
    if (settings.get(settings::smartAudioBanditEnabled))
        separator = std::make_shared<BanditStemSeparator>();
    else
        separator = std::make_shared<StubStemSeparator>();
    return std::make_shared<StemCache>(std::move(separator), std::move(store));
}

std::string StemCache::key(const TakeSound& audio) {
    platform::SHA256 hash;
    for (const TakeSound::File& file : audio.files) {
        std::string bytes = file.url.path;
        if (const auto there = files::attributes(file.url.path))
            appendPlain(bytes, there->modificationSinceReference + platform::referenceDateUnixSeconds);
        if (audio.files.size() > 1) {
            appendPlain(bytes, file.firstChannel);
            appendPlain(bytes, file.channelCount);
            appendPlain(bytes, file.startSeconds);
            appendPlain(bytes, file.durationSeconds);
        }
        hash.add(bytes);
    }
    return platform::hexadecimal(hash.digest());
}

std::string StemCache::folderOf(const std::string& key) const { return store_->path(Folder::stems, key); }

std::optional<SeparatedStems> StemCache::kept(const std::string& key) const {
    const std::string folder = folderOf(key);
    for (const char* name : {dialogueStemName, musicStemName, effectsStemName, metaName})
        if (!files::exists(folder + "/" + name)) return std::nullopt;
    try {
        const JSON meta = JSON::parse(files::readText(folder + "/" + metaName));
        SeparatedStems stems = stemsIn(folder);
        stems.sampleRate = required<double>(meta, "sampleRate");
        stems.durationSeconds = required<double>(meta, "durationSeconds");
        files::markUsed(folder);
        return stems;
    } catch (const std::runtime_error&) { // cannot be read, or is not a valid record
        return std::nullopt;
    }
}

std::optional<SeparatedStems> StemCache::stems(const TakeSound& audio, const std::stop_token& stop) {
    separator_->prepare();
    if (!separator_->isAvailable()) return std::nullopt;
    const std::string key = StemCache::key(audio);
    {
        constexpr std::chrono::milliseconds interval{20}; // the time within which a stop is noticed
        std::unique_lock lock(mutex_);
        while (inFlight_.contains(key)) {
            ended_.wait_for(lock, interval);
            platform::throwIfStopped(stop);
        }
        if (auto found = kept(key)) return found;
        inFlight_.insert(key);
    }
    const SeparationUnderWay underWay(mutex_, ended_, inFlight_, key);
    return separated(audio, key, stop);
}

/// The record is written last: without it the folder does not count as complete.
std::optional<SeparatedStems> StemCache::separated(const TakeSound& audio, const std::string& key,
                                                   const std::stop_token& stop) {
    const std::string folder = folderOf(key);
    files::createDirectories(folder);
    try {
        auto stems = separator_->separate(audio, folder, stop);
        if (!stems || StemCache::key(audio) != key) {
            files::removeTree(folder);
            return std::nullopt;
        }
        JSON meta;
        meta.set("sampleRate", stems->sampleRate);
        meta.set("durationSeconds", stems->durationSeconds);
        files::writeAtomically(folder + "/" + metaName, meta.dump(JSON::Layout::pretty));
        store_->makeRoom(folder);
        return stems;
    } catch (...) {
        try {
            files::removeTree(folder);
        } catch (const platform::FileError&) { // an incomplete folder is not used
        }
        throw;
    }
}

void StemCache::invalidate(const TakeSound& audio) {
    try {
        files::removeTree(folderOf(key(audio)));
    } catch (const platform::FileError&) { // does not exist, or cannot be removed
    }
}

void StemCache::purgeAll() {
    const std::string root = files::folderOf(folderOf("x"));
    try {
        files::removeTree(root);
        files::createDirectories(root);
    } catch (const platform::FileError&) { // what cannot be removed stays
    }
}

} // namespace orvane
