#pragma once

#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

// A kept waveform as a file: a name with the number of the layout, the hash of all that follows, the key, the
// numbers, and the values list by list.

/// `key` is what it is kept under.
std::string waveformBytes(const std::string& key, const WaveformResult& waveform);

/// Nothing for bytes that are damaged, of another key or layout, or hold what no reduction gives: a level
/// below 0 or not finite, lists of different lengths.
std::optional<WaveformResult> waveformFromBytes(std::string_view bytes, std::string_view key);

} // namespace orvane
