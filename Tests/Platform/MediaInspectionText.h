#pragma once

#include "Platform/MediaInspector.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string>

namespace orvane::test {

inline std::string numberText(const std::optional<double>& value) {
    if (!value) return "?";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.7g", *value);
    return text.data();
}

/// An inspection as one line, for readable tables of cases: "10 s, avc1 1920x1080 25 fps, 48000 Hz 2 ch".
inline std::string inspectionText(const std::optional<platform::MediaInspection>& inspection) {
    if (!inspection) return "nothing";
    std::string text = numberText(inspection->durationSeconds) + " s";
    for (const auto& track : inspection->videoTracks)
        text += ", " + track.codecFourCC.value_or("?") + " " + numberText(track.width) + "x" +
                numberText(track.height) + " " + numberText(track.nominalFrameRate) + " fps";
    for (const auto& track : inspection->audioTracks)
        text += ", " + numberText(track.sampleRate) + " Hz " +
                (track.channelCount ? std::to_string(*track.channelCount) : "?") + " ch";
    return inspection->isUnclosed ? text + ", unclosed" : text;
}

inline std::string metadataText(const std::optional<platform::MediaInspection>& inspection) {
    std::string text;
    if (!inspection) return "nothing";
    for (const auto& item : inspection->metadata)
        text += item.key + (item.commonKey.empty() ? "" : "(" + item.commonKey + ")") + "=" +
                (item.string ? "'" + *item.string + "'" : numberText(item.number)) + " ";
    return text;
}

inline std::optional<platform::MediaInspection> inspectBytes(const std::string& bytes) {
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
    return platform::inspectMediaHeaders(file);
}

} // namespace orvane::test
