#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioTerms.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// An analysis as it is stored.
struct StoredAnalysis {
    SmartAudioTerms terms; ///< the options with which it was made
    SmartAudioResult result;
    std::optional<double> lufs = {}; ///< loudness of the recording, where it was measured in the same reading

    bool operator==(const StoredAnalysis&) const = default;
};

/// The contents of its file. `version`: of the analysis that made it.
std::string analysisBytes(std::string_view key, std::uint32_t version, const StoredAnalysis& analysis);
/// Absent if the bytes are damaged, or are of another key or version.
std::optional<StoredAnalysis> analysisFromBytes(std::string_view bytes, std::string_view key,
                                                std::uint32_t version);

} // namespace orvane
