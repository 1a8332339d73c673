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

/// The text report of a routing run, for the user.
inline constexpr std::string_view routingDiagnosticName = "orvane_routing_debug.txt";

/// The scores and decisions of every 50th window; `decisions` has those of all frames.
std::string windowReport(std::span<const PerWindowFrame> frames,
                         const std::vector<ChannelClassification>& classifications,
                         const TakeStatistics& channelStats, const std::set<int>& candidateTracks,
                         const std::vector<WindowDecision>& decisions);

/// The final blocks, of either router.
std::string blockReport(const std::vector<BlockDecision>& blocks, std::optional<int> takeDefault,
                        bool isBySpeaker, const std::vector<ChannelClassification>& classifications);

// Writes a new report. A failure to write is ignored; an empty path writes nothing.

void replaceReport(const std::string& path, std::string_view text);
/// Appends to an existing report and never creates one; above 2 MB only the newest part is kept.
void appendToReport(const std::string& path, std::string_view text);

} // namespace orvane::SmartAudioBlockRouter
