#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"

#include "OrvaneSyncCore/Services/SmartAudio/BlockGain.h"
#include "OrvaneSyncCore/Services/SmartAudio/BlockSmoothing.h"
#include "OrvaneSyncCore/Services/SmartAudio/BlockSource.h"
#include "OrvaneSyncCore/Services/SmartAudio/MaterialDetection.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/SpeakerRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeDefault.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowRouting.h"

#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double snapToleranceSeconds = 0.5;

std::vector<BlockDecision> blocksWindowByWindow(std::span<const PerWindowFrame> frames, double windowSeconds,
                                                const std::vector<ChannelClassification>& classifications,
                                                const TakeStatistics& channelStats,
                                                const std::set<int>& candidateTracks, double minBlockSeconds,
                                                const std::string& diagnosticFile) {
    const auto decisions =
        perWindowDecisions(frames, TrackRoles::of(classifications), channelStats, candidateTracks);
    if (!diagnosticFile.empty())
        replaceReport(diagnosticFile,
                      windowReport(frames, classifications, channelStats, candidateTracks, decisions));
    return consolidateRuns(decisions, windowSeconds, minBlockSeconds);
}

} // namespace

Routing computeBlocks(std::span<const PerWindowFrame> frames, double windowSeconds,
                      std::vector<ChannelClassification> classifications,
                      const SmartAudioBlockSettings& settings, const std::optional<StemMetrics>& stemMetrics,
                      const std::set<int>& candidateTracks, const std::string& diagnosticFile) {
    if (frames.empty()) return {};
    Routing routing{.blocks = {}, .detected = detectMaterialCharacter(frames, windowSeconds)};
    const double minBlockSeconds = blockSeconds(settings.blockMode, routing.detected);

    // The frames keep all tracks: a track that must not be played still counts in the statistics.
    if (!candidateTracks.empty())
        std::erase_if(classifications, [&](const ChannelClassification& classification) {
            return !candidateTracks.contains(classification.trackIndex);
        });
    const TakeStatistics channelStats = computeChannelStats(frames);

    std::optional<int> takeDefault;
    const auto roles = withoutRefutedGuesses(classifications, channelStats, frames);
    if (isRoutedBySpeaker(settings.routing, channelStats, roles))
        routing.blocks =
            buildBlocksBySpeaker(personalTracks(channelStats, roles), frames, windowSeconds, minBlockSeconds);
    const bool isBySpeaker = !routing.blocks.empty();
    if (!isBySpeaker) {
        takeDefault = pickTakeDefault(candidateTracks, channelStats, classifications);
        routing.blocks = takeDefault
                             ? buildBlocksFromDefault(*takeDefault, frames, windowSeconds, classifications,
                                                      minBlockSeconds)
                             : blocksWindowByWindow(frames, windowSeconds, classifications, channelStats,
                                                    candidateTracks, minBlockSeconds, diagnosticFile);
        routing.blocks = snapBoundariesToSilence(std::move(routing.blocks), frames, windowSeconds,
                                                 snapToleranceSeconds, stemMetrics);
    }
    // Both boundaries of a short block may have been moved to the same window. Such a block is not audible,
    // so its track must not be switched on for it.
    std::erase_if(routing.blocks,
                  [](const BlockDecision& block) { return !(block.endSeconds > block.startSeconds); });
    applyBlockGain(routing.blocks, frames, windowSeconds, settings, stemMetrics);

    if (!diagnosticFile.empty())
        appendToReport(diagnosticFile,
                       blockReport(routing.blocks, takeDefault, isBySpeaker, classifications));
    return routing;
}

} // namespace orvane::SmartAudioBlockRouter
