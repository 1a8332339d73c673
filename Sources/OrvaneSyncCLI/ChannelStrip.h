#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <string>
#include <vector>

namespace orvane::cli {

/// A take as a picture of text: one row for each channel, a full block where it is heard, a light one where
/// it is chosen and silent, a half-dark one where it is the second speaker's, and the time below. `names` has
/// one label for each channel, the first for track 1. Empty without blocks.
std::string channelStrip(const std::vector<BlockDecision>& blocks, const std::vector<std::string>& names,
                         int columns);

} // namespace orvane::cli
