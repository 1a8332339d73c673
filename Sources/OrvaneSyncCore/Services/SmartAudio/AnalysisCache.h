#pragma once

#include "OrvaneSyncCore/Services/Persistence/CachedFiles.h"
#include "OrvaneSyncCore/Services/SmartAudio/AnalysisFile.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace orvane {

/// The latest analysis of each recording, so that one that was made is not repeated after a restart. It is
/// found as long as the files of the recording have the same size and date. Only for speed: after any failure
/// a recording is analysed again. Any thread that may wait.
class AnalysisCache {
  public:
    /// The version of the analysis. Increase it whenever the same recording gives another result with the
    /// same options, or `StoredAnalysis` is stored differently: then recordings are analysed again.
    static constexpr std::uint32_t currentVersion = 1;
    static constexpr std::uint64_t usualMostBytes = std::uint64_t{256} << 20U;

    explicit AnalysisCache(std::string folder, std::uint64_t mostBytes = usualMostBytes,
                           std::uint32_t version = currentVersion);
    /// The cache of the user's account, below the caches directory.
    static std::shared_ptr<AnalysisCache> shared();

    /// The recording with the present attributes of its files, and all of the request that belongs to the
    /// clip: number and names of its channels, and which the analysis may use. Absent if a file's attributes
    /// cannot be read.
    static std::optional<std::string> keyOf(const SmartAudioRequest& request);

    /// The latest analysis, whatever its options.
    std::optional<StoredAnalysis> find(const std::string& key) const;
    /// Replaces an earlier one. Does nothing if the files have changed since the key was made, or if the
    /// recording was not read whole.
    void store(const std::string& key, const SmartAudioRequest& request, const StoredAnalysis& analysis);

  private:
    const std::uint32_t version_;
    CachedFiles files_;
};

} // namespace orvane
