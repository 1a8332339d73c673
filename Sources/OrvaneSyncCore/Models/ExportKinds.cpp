#include "OrvaneSyncCore/Models/ExportKinds.h"

#include "OrvaneSyncCore/Models/MatchingDays.h"

namespace orvane {

std::string_view displayText(ClipNamingSource source) {
    static constexpr std::array<std::string_view, 4> texts{"Video Filename", "Audio Filename", "Scene-Take",
                                                           "Custom"};
    return rowOf(texts, source);
}

std::string_view displayText(VideoResolutionMode mode) {
    return mode == VideoResolutionMode::useVideoFrameSize ? "Native (per-clip)" : "Alternate (fixed)";
}

std::string_view displayText(SpatialConformType type) {
    static constexpr std::array<std::string_view, 3> texts{"Fill (crop)", "Fit (letterbox)", "None (native)"};
    return rowOf(texts, type);
}

std::string_view displayText(TrimMode mode) {
    static constexpr std::array<std::string_view, 4> texts{
        "Common (trim to shortest)", "Video duration", "No trim (longest)", "Overlap (picture and sound)"};
    return rowOf(texts, mode);
}

std::string_view displayText(NotesSource source) {
    static constexpr std::array<std::string_view, 4> texts{"Video only", "Audio only", "Video + Audio",
                                                           "None"};
    return rowOf(texts, source);
}

std::string_view displayText(MulticamCodec codec) {
    return codec == MulticamCodec::automatic ? "Auto (from source, fallback ProRes LT)" : rawValue(codec);
}

std::string_view displayText(GlobalOffsetStart start) {
    static constexpr std::array<std::string_view, 3> texts{"All clips", "The clips from a file name on",
                                                           "The clips from a timecode on"};
    return rowOf(texts, start);
}

std::string_view displayText(ReportMatchField field) {
    return field == ReportMatchField::name ? "The clip's name" : "A column";
}

std::string_view displayText(MatchingDays days) {
    static constexpr std::array<std::string_view, 4> texts{"Automatic (its own; clocks a day off)",
                                                           "Its own day", "Its own day, and across midnight",
                                                           "Its own day and both beside it"};
    return rowOf(texts, days);
}

} // namespace orvane
