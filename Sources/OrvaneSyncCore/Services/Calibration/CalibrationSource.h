#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

// The sound of a calibration: one channel at 48 kHz, one minute long.
inline constexpr double calibrationSampleRate = 48000;
inline constexpr double calibrationSeconds = 60;
inline constexpr std::size_t calibrationFrames = 2'880'000;

/// The loudest minute of the first channel of a recording, converted to `calibrationSampleRate`. Absent if
/// the recording is shorter or cannot be read. Only this minute is kept in memory. Throws Stopped, and
/// ReadFailed if reading ends early.
std::optional<std::vector<float>> extractWindow(const FileURL& recording, const std::stop_token& stop = {});

/// Bursts of pink noise (Voss-McCartney, 16 rows): in each second 0.6 s of noise with fades of 50 ms, then
/// silence.
std::vector<float> syntheticCalibrationSource(std::uint64_t seed);

} // namespace orvane
