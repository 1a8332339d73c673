#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowRouting.h"

#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The text report of a routing run, for people.
inline constexpr std::string_view routingDiagnosticName = "orvane_routing_debug.txt";

/// How windows were scored and decided: one of 50, `decisions` being those of all frames.
std::string windowReport(std::span<const PerWindowFrame> frames,
                         const std::vector<ChannelClassification>& classifications,
                         const TakeStatistics& channelStats, const std::set<int>& candidateTracks,
                         const std::vector<WindowDecision>& decisions);

/// What came out in the end, by whichever router.
std::string blockReport(const std::vector<BlockDecision>& blocks, std::optional<int> takeDefault,
                        bool isBySpeaker, const std::vector<ChannelClassification>& classifications);

// A report that cannot be written is no failure of the routing. An empty path writes nothing.

void replaceReport(const std::string& path, std::string_view text);
/// A file that does not exist stays unwritten; of one beyond 2 MB only the newest part is kept.
void appendToReport(const std::string& path, std::string_view text);

} // namespace orvane::SmartAudioBlockRouter
