#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <optional>
#include <string>

namespace orvane {

/// How a clap was found.
enum class ClapMethod { audioTransient, visualSlate, manual };
template <>
struct RawValues<ClapMethod> {
    static constexpr std::array<std::string_view, 3> texts{"Audio", "Visual", "Manual"};
};

/// What a search for a clapper board found in one clip.
struct SlateResult {
    /// Seconds of the audio file, of a clap that was heard; of the video, of one that was seen.
    std::optional<double> clapPointSeconds = {};
    std::optional<ClapMethod> clapMethod = {}; ///< absent without a clap
    std::optional<double> slateFrameTime = {}; ///< of the picture that shows the slate, seconds of the video
    // As they were read from the slate.
    std::optional<std::string> ocrScene = {};
    std::optional<std::string> ocrTake = {};
    std::optional<std::string> ocrRoll = {}; ///< or camera

    bool hasClap() const { return clapPointSeconds.has_value(); }
    bool hasSlate() const { return slateFrameTime.has_value(); }
    /// A roll alone does not count.
    bool hasOCR() const { return ocrScene || ocrTake; }

    bool operator==(const SlateResult&) const = default;
};

JSON toJSON(const SlateResult& result);

} // namespace orvane
