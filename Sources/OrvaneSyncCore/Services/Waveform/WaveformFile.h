#pragma once

#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

// The file of a cached waveform: a name with the number of the layout, the hash of everything after it, the
// key, the numbers, and the values list by list.

/// `key` is the key of the cache.
std::string waveformBytes(const std::string& key, const WaveformResult& waveform);

/// Absent if the bytes are damaged or of another key or layout, or have values that no reduction gives: a
/// level below 0 or not finite, lists of different lengths.
std::optional<WaveformResult> waveformFromBytes(std::string_view bytes, std::string_view key);

} // namespace orvane
