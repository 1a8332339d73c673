#include "OrvaneSyncCore/Models/ExportKinds.h"

namespace orvane {

std::string_view displayText(VideoResolutionMode mode) {
    return mode == VideoResolutionMode::useVideoFrameSize ? "Native (per-clip)" : "Alternate (fixed)";
}

std::string_view displayText(SpatialConformType type) {
    static constexpr std::array<std::string_view, 3> texts{"Fill (crop)", "Fit (letterbox)", "None (native)"};
    return texts.at(static_cast<std::size_t>(type));
}

std::string_view displayText(TrimMode mode) {
    static constexpr std::array<std::string_view, 4> texts{
        "Common (trim to shortest)", "Video duration", "No trim (longest)", "Overlap (picture and sound)"};
    return texts.at(static_cast<std::size_t>(mode));
}

std::string_view displayText(NotesSource source) {
    static constexpr std::array<std::string_view, 4> texts{"Video only", "Audio only", "Video + Audio",
                                                           "None"};
    return texts.at(static_cast<std::size_t>(source));
}

std::string_view displayText(MulticamCodec codec) {
    return codec == MulticamCodec::automatic ? "Auto (from source, fallback ProRes LT)" : rawValue(codec);
}

} // namespace orvane
