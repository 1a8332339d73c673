#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/Stems/AudioStemSeparator.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

namespace orvane {

/// The stems of recordings, in a folder for each, found again as long as the recording has not changed. Two
/// requests for one recording share one separation. Any thread that may wait.
class StemCache {
  public:
    /// `store` has the folder of stems and limits its size.
    StemCache(std::shared_ptr<AudioStemSeparator> separator, std::shared_ptr<const RenderedAudioStore> store);
    /// With the separator that the settings select.
    static std::shared_ptr<StemCache> bySettings(const platform::SettingsStore& settings,
                                                 std::shared_ptr<const RenderedAudioStore> store);

    /// Absent without a separator and for a recording that cannot be read. Throws like `separate`.
    std::optional<SeparatedStems> stems(const TakeSound& audio, const std::stop_token& stop = {});
    /// These ignore failures.
    void invalidate(const TakeSound& audio);
    void purgeAll();

    const AudioStemSeparator& separator() const { return *separator_; }
    /// SHA-256 in hexadecimal digits over path and modification date (seconds since 1970) of every file and,
    /// if there are several files, over their positions in the take.
    static std::string key(const TakeSound& audio);

  private:
    std::string folderOf(const std::string& key) const;
    std::optional<SeparatedStems> kept(const std::string& key) const;
    std::optional<SeparatedStems> separated(const TakeSound& audio, const std::string& key,
                                            const std::stop_token& stop);

    const std::shared_ptr<AudioStemSeparator> separator_;
    const std::shared_ptr<const RenderedAudioStore> store_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::set<std::string> inFlight_; ///< keys of separations in progress
};

} // namespace orvane
