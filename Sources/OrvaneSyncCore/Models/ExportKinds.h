#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <array>
#include <string_view>

namespace orvane {

/// The source of a clip's name.
enum class ClipNamingSource { video, audio, sceneTake, custom };
template <>
struct RawValues<ClipNamingSource> {
    static constexpr std::array<std::string_view, 4> texts{"video", "audio", "sceneTake", "custom"};
};
std::string_view displayText(ClipNamingSource source);

/// The frame size of the main format.
enum class VideoResolutionMode { useVideoFrameSize, useAlternateFrameSize };
template <>
struct RawValues<VideoResolutionMode> {
    static constexpr std::array<std::string_view, 2> texts{"video", "alternate"};
};
std::string_view displayText(VideoResolutionMode mode);

/// Shapes of the alternate frame, by the identifiers under which they are stored. The last one is for a size
/// given in pixels.
inline constexpr std::array<std::string_view, 9> aspectRatioIdentifiers{
    "16:9", "1.85:1", "2:1", "2.35:1", "2.39:1", "4:3", "1:1", "9:16", "custom"};

/// How a picture of another size is fitted into its frame.
enum class SpatialConformType { fill, fit, none };
template <>
struct RawValues<SpatialConformType> {
    static constexpr std::array<std::string_view, 3> texts{"fill", "fit", "none"};
};
std::string_view displayText(SpatialConformType type);

/// The time range of a synchronized clip.
enum class TrimMode {
    commonDuration, ///< from the picture's start, as long as the shorter of picture and sound
    videoDuration,
    noTrim, ///< from the picture's start, as long as the longest
    overlap ///< the common range of picture and sound
};
template <>
struct RawValues<TrimMode> {
    static constexpr std::array<std::string_view, 4> texts{"common", "video", "none", "overlap"};
};
std::string_view displayText(TrimMode mode);

/// What is written into the notes field of a clip.
enum class NotesSource { video, audio, both, none };
template <>
struct RawValues<NotesSource> {
    static constexpr std::array<std::string_view, 4> texts{"video", "audio", "both", "none"};
};
std::string_view displayText(NotesSource source);

/// The codec to which Final Cut Pro renders a multicam clip.
enum class MulticamCodec { automatic, proRes422HQ, proRes422, proRes422LT, proRes422Proxy, proRes4444, h264 };
template <>
struct RawValues<MulticamCodec> {
    static constexpr std::array<std::string_view, 7> texts{
        "auto",
        "Apple ProRes 422 HQ",
        "Apple ProRes 422",
        "Apple ProRes 422 LT",
        "Apple ProRes 422 Proxy",
        "Apple ProRes 4444",
        "H.264",
    };
};
std::string_view displayText(MulticamCodec codec);

/// The clips to which the global audio offset applies: all, or those from a named one on.
enum class GlobalOffsetStart { all, fromFilename, fromTC };
template <>
struct RawValues<GlobalOffsetStart> {
    static constexpr std::array<std::string_view, 3> texts{"all", "fromFilename", "fromTC"};
};
std::string_view displayText(GlobalOffsetStart start);

/// How the lines of a report are matched to clips.
enum class ReportMatchField { name, column };
template <>
struct RawValues<ReportMatchField> {
    static constexpr std::array<std::string_view, 2> texts{"name", "column"};
};
std::string_view displayText(ReportMatchField field);

} // namespace orvane
