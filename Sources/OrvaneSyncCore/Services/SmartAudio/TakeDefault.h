#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// Points into the classifications. Of several for one track the first counts.
using ClassificationByTrack = std::unordered_map<int, const ChannelClassification*>;
ClassificationByTrack byTrack(const std::vector<ChannelClassification>& classifications);

/// Whether a track could be the one below: it speaks enough, or is isolated and speaks.
bool qualifiesAsDefault(const ChannelRouteStats& stats, const ClassificationByTrack& classifications);

/// The one track that is heard through a take unless something is plainly better: an isolated track with
/// enough speech, else the track that speaks most and most evenly. Nothing when no track speaks enough.
/// No candidates mean all tracks. Tracks are tried in the order of their numbers.
std::optional<int> pickTakeDefault(const std::set<int>& candidateTracks, const TakeStatistics& channelStats,
                                   const std::vector<ChannelClassification>& classifications);

} // namespace orvane::SmartAudioBlockRouter
