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

/// The folders below the caches directory with rendered sound, which is found again by name. Their total size
/// is limited by the setting `caches.limitGB`; above it the files that were unused for longest are removed.
/// Everything can be removed and rendered again. Any thread that may wait.
class RenderedAudioStore {
  public:
    enum class Folder { mixdowns, voiceIsolation, stems };

    /// `cachesDirectory` is created at the first write.
    RenderedAudioStore(std::string cachesDirectory, std::shared_ptr<const platform::SettingsStore> settings);
    /// The store of the user's account.
    static std::shared_ptr<RenderedAudioStore>
    shared(std::shared_ptr<const platform::SettingsStore> settings);

    std::string path(Folder folder, std::string_view name) const;
    /// A complete sound file of that name; also marks it as used now.
    std::optional<RenderResult> find(Folder folder, std::string_view name) const;
    /// Writes a file of that name, completely or not at all, and makes room for it. `fill` writes the sound
    /// and returns whether to keep it. Absent if it is not kept, or if writing fails. Exceptions of `fill`
    /// other than FileError are passed on.
    std::optional<RenderResult> keep(Folder folder, const std::string& name,
                                     platform::AudioFileWriter::Format format,
                                     const std::function<bool(platform::AudioFileWriter&)>& fill) const;

    std::uint64_t limitBytes() const;
    /// Removes files until the limit is met, but never `used`.
    void makeRoom(const std::string& used) const;

  private:
    const std::string cachesDirectory_;
    const std::shared_ptr<const platform::SettingsStore> settings_;
};

/// One folder of the caches, for display.
struct CacheFolder {
    std::string name;
    std::string path;
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};
struct CacheReport {
    std::string folder;               ///< the folder that contains all of them
    double limitGB = 0;               ///< for rendered sound, in units of 10^9 bytes
    std::int64_t renderedBytes = 0;   ///< size of rendered sound
    std::int64_t bytes = 0;           ///< size of all
    std::vector<CacheFolder> folders; ///< without empty ones, by name
};
/// For the caches of the user's account.
CacheReport cacheReport(const platform::SettingsStore& settings);
platform::JSON toJSON(const CacheReport& report);

/// The origin that the program writes into its renderings. The description may be empty.
platform::AudioFileWriter::Broadcast renderingBroadcast(std::string_view description = {});

} // namespace orvane
