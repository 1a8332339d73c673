#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/RenderResult.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/SettingsStore.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The folders below the caches directory that hold rendered sound, found again by name. Together they have a
/// limit of size, the setting `caches.limitGB`; once it is passed, what nobody has used for longest goes. All
/// can be thrown away and rendered again. Any thread that may wait.
class RenderedAudioStore {
  public:
    enum class Folder { mixdowns, voiceIsolation, stems };

    /// `cachesDirectory`: made when it is first written to.
    RenderedAudioStore(std::string cachesDirectory, std::shared_ptr<const platform::SettingsStore> settings);
    /// That of the user account.
    static std::shared_ptr<RenderedAudioStore>
    shared(std::shared_ptr<const platform::SettingsStore> settings);

    std::string path(Folder folder, std::string_view name) const;
    /// A whole sound file of that name. From then on it counts as used.
    std::optional<RenderResult> find(Folder folder, std::string_view name) const;
    /// Writes a file of that name, as a whole or not at all, and makes room for it. `fill` writes the sound
    /// and says whether it is to be kept. Nothing where it is not, and where the disk refuses. What `fill`
    /// throws but for FileError passes through.
    std::optional<RenderResult> keep(Folder folder, const std::string& name,
                                     platform::AudioFileWriter::Format format,
                                     const std::function<bool(platform::AudioFileWriter&)>& fill) const;

    std::uint64_t limitBytes() const;
    /// Down to the limit; `used` stays.
    void makeRoom(const std::string& used) const;

  private:
    const std::string cachesDirectory_;
    const std::shared_ptr<const platform::SettingsStore> settings_;
};

/// One folder of the caches as people are shown it.
struct CacheFolder {
    std::string name;
    std::string path;
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};
struct CacheReport {
    std::string folder;               ///< with all of them
    double limitGB = 0;               ///< of rendered sound, 10^9 bytes
    std::int64_t renderedBytes = 0;   ///< of rendered sound
    std::int64_t bytes = 0;           ///< of all
    std::vector<CacheFolder> folders; ///< those that hold something, by name
};
/// Of the user account.
CacheReport cacheReport(const platform::SettingsStore& settings);
platform::JSON toJSON(const CacheReport& report);

/// Who made a file, as the program's renderings say it. The description may be empty.
platform::AudioFileWriter::Broadcast renderingBroadcast(std::string_view description = {});

} // namespace orvane
