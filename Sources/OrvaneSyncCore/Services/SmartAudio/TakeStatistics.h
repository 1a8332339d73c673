#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <map>
#include <span>

namespace orvane::SmartAudioBlockRouter {

/// By track, in track order.
using TakeStatistics = std::map<int, ChannelRouteStats>;

/// One record for each track that occurs in the frames; all its numbers are finite.
TakeStatistics computeChannelStats(std::span<const PerWindowFrame> frames);

} // namespace orvane::SmartAudioBlockRouter
