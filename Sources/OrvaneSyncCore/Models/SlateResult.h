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

/// The result of the search for a clapper board in one clip.
struct SlateResult {
    /// In seconds of the audio file if the clap was heard, of the video if it was seen.
    std::optional<double> clapPointSeconds = {};
    std::optional<ClapMethod> clapMethod = {}; ///< absent without a clap
    std::optional<double> slateFrameTime = {}; ///< seconds of the video; the picture with the slate
    // The texts below are as the slate shows them.
    std::optional<std::string> ocrScene = {};
    std::optional<std::string> ocrTake = {};
    std::optional<std::string> ocrRoll = {}; ///< or camera

    bool hasClap() const { return clapPointSeconds.has_value(); }
    bool hasSlate() const { return slateFrameTime.has_value(); }
    /// A roll alone is not enough.
    bool hasOCR() const { return ocrScene || ocrTake; }

    bool operator==(const SlateResult&) const = default;
};

JSON toJSON(const SlateResult& result);

} // namespace orvane
