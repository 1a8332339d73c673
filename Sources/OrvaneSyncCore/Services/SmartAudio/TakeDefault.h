#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// Pointers into the classifications. If several are for one track, the first counts.
using ClassificationByTrack = std::unordered_map<int, const ChannelClassification*>;
ClassificationByTrack byTrack(const std::vector<ChannelClassification>& classifications);

/// Whether a track could be the take's default: it has enough speech, or it is isolated and has speech.
bool qualifiesAsDefault(const ChannelRouteStats& stats, const ClassificationByTrack& classifications);

/// The default track of a take, which is played unless another one is clearly better: an isolated track with
/// enough speech, otherwise the track with the most and steadiest speech. Absent if no track has enough
/// speech. No candidates means all tracks. Tracks are tried in the order of their numbers.
std::optional<int> pickTakeDefault(const std::set<int>& candidateTracks, const TakeStatistics& channelStats,
                                   const std::vector<ChannelClassification>& classifications);

} // namespace orvane::SmartAudioBlockRouter
