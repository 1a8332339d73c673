#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <optional>
#include <set>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The one track that is heard through a take unless something is plainly better: an isolated track with
/// enough speech, else the track that speaks most and most evenly. Nothing when no track speaks enough.
/// No candidates mean all tracks. Tracks are tried in the order of their numbers.
std::optional<int> pickTakeDefault(const std::set<int>& candidateTracks, const TakeStatistics& channelStats,
                                   const std::vector<ChannelClassification>& classifications);

/// Null for a track that was not classified.
const ChannelClassification* classificationOf(const std::vector<ChannelClassification>& classifications,
                                              int track);

} // namespace orvane::SmartAudioBlockRouter
