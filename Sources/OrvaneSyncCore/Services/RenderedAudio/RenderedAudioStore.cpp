#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/CachedFiles.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/AudioFile.h"
#include "Platform/FileUse.h"
#include "Platform/Files.h"
#include "Platform/Log.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane {

namespace files = platform::files;

namespace {

using Folder = RenderedAudioStore::Folder;

constexpr std::array renderedFolders{Folder::mixdowns, Folder::voiceIsolation, Folder::stems};

/// The settings file may have any number, so it is clamped.
double limitGB(const platform::SettingsStore& settings) {
    constexpr double most = 1e6;
    return std::clamp(settings.get(settings::cachesLimitGB), 0.0, most);
}

std::string_view nameOf(Folder folder) {
    switch (folder) {
    case Folder::mixdowns:
        return AppStorageHelper::mixdownsFolderName;
    case Folder::voiceIsolation:
        return AppStorageHelper::voiceIsolationFolderName;
    case Folder::stems:
        return AppStorageHelper::stemsFolderName;
    }
    return {};
}

/// Number of files and bytes of an entry, which may be a file or a folder.
std::pair<std::int64_t, std::int64_t> sizeOf(const std::string& path) {
    std::pair<std::int64_t, std::int64_t> size{0, 0};
    const auto add = [&](const std::string& file) {
        if (const auto there = files::attributes(file)) {
            ++size.first;
            size.second += there->size;
        }
    };
    const auto there = files::attributes(path);
    if (there && !there->isDirectory) add(path);
    if (there && there->isDirectory)
        files::walk(
            path,
            [&](const std::string& file, files::WalkEntry kind) {
                if (kind == files::WalkEntry::file) add(file);
            },
            [](const std::string&) { return true; }, files::Hidden::include);
    return size;
}

} // namespace

RenderedAudioStore::RenderedAudioStore(std::string cachesDirectory,
                                       std::shared_ptr<const platform::SettingsStore> settings)
    : cachesDirectory_(std::move(cachesDirectory)), settings_(std::move(settings)) {}

std::shared_ptr<RenderedAudioStore>
RenderedAudioStore::shared(std::shared_ptr<const platform::SettingsStore> settings) {
    return std::make_shared<RenderedAudioStore>(AppStorageHelper::cachesDirectory(), std::move(settings));
}

std::string RenderedAudioStore::path(Folder folder, std::string_view name) const {
    return cachesDirectory_ + "/" + std::string(nameOf(folder)) + "/" + std::string(name);
}

std::optional<RenderResult> RenderedAudioStore::find(Folder folder, std::string_view name) const {
    const std::string file = path(folder, name);
    if (!files::exists(file)) return std::nullopt;
    const auto audio = platform::AudioFile::open(file);
    if (!audio || audio->frameCount() <= 0 || audio->frameCount() != audio->promisedFrames())
        return std::nullopt;
    files::markUsed(file);
    return RenderResult{
        {file}, static_cast<double>(audio->frameCount()) / audio->sampleRate(), audio->sampleRate()};
}

std::optional<RenderResult>
RenderedAudioStore::keep(Folder folder, const std::string& name, platform::AudioFileWriter::Format format,
                         const std::function<bool(platform::AudioFileWriter&)>& fill) const {
    const std::string file = path(folder, name);
    try {
        files::createDirectories(files::folderOf(file));
        platform::AudioFileWriter writer(file, format, renderingBroadcast());
        if (!fill(writer) || writer.frames() == 0) return std::nullopt;
        writer.finish();
        makeRoom(file);
        return RenderResult{
            {file}, static_cast<double>(writer.frames()) / format.sampleRate, format.sampleRate};
    } catch (const platform::FileError& error) {
        platform::logError(error.what());
        return std::nullopt;
    }
}

std::uint64_t RenderedAudioStore::limitBytes() const {
    constexpr double gigabyte = 1e9;
    return static_cast<std::uint64_t>(limitGB(*settings_) * gigabyte);
}

void RenderedAudioStore::makeRoom(const std::string& used) const {
    std::vector<CacheEntry> entries;
    std::uint64_t total = 0;
    for (const Folder folder : renderedFolders) {
        const std::string path = cachesDirectory_ + "/" + std::string(nameOf(folder));
        files::removeAbandonedTemporaries(path);
        for (const std::string& name : files::childNames(path).value_or(std::vector<std::string>())) {
            if (name.starts_with('.')) continue; // in the course of being written
            std::string entry = path + "/" + name;
            const auto bytes = static_cast<std::uint64_t>(sizeOf(entry).second);
            total += bytes;
            if (entry != used) entries.push_back({files::lastUsed(entry), bytes, std::move(entry)});
        }
    }
    removeOldest(std::move(entries), total, limitBytes());
}

CacheReport cacheReport(const platform::SettingsStore& settings) {
    CacheReport report;
    report.folder = AppStorageHelper::cachesDirectory();
    report.limitGB = limitGB(settings);
    for (const std::string& name : files::childNames(report.folder).value_or(std::vector<std::string>())) {
        const std::string path = report.folder + "/" + name;
        const auto [count, bytes] = sizeOf(path);
        if (count == 0) continue;
        report.folders.push_back({name, path, count, bytes});
        report.bytes += bytes;
        const auto isOf = [&](Folder folder) { return nameOf(folder) == name; };
        if (std::ranges::any_of(renderedFolders, isOf)) report.renderedBytes += bytes;
    }
    std::ranges::sort(report.folders, {}, &CacheFolder::name);
    return report;
}

platform::JSON toJSON(const CacheReport& report) {
    platform::JSON::Array folders;
    for (const CacheFolder& folder : report.folders) {
        platform::JSON row;
        row.set("name", folder.name);
        row.set("path", folder.path);
        row.set("files", folder.files);
        row.set("bytes", folder.bytes);
        folders.push_back(std::move(row));
    }
    platform::JSON json;
    json.set("folder", report.folder);
    json.set("limitGB", report.limitGB);
    json.set("renderedBytes", report.renderedBytes);
    json.set("bytes", report.bytes);
    json.set("folders", std::move(folders));
    return json;
}

platform::AudioFileWriter::Broadcast renderingBroadcast(std::string_view description) {
    return {renderingMark, description};
}

} // namespace orvane
