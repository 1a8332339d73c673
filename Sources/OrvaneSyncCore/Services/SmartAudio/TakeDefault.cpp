#include "OrvaneSyncCore/Services/SmartAudio/TakeDefault.h"

#include "Platform/Text.h"

#include <cmath>
#include <string>
#include <string_view>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr std::string_view isolatedWord = "iso";
constexpr double minIsolatedCoverage = 0.25; // share of windows with speech
constexpr double minCoverage = 0.4;
constexpr double similarCoverage = 0.05; // up to this difference the steadier track is taken

/// Searches the whole text for any role: a mix of isolated tracks counts as well.
bool isIsolated(const ClassificationByTrack& classifications, int track) {
    const auto found = classifications.find(track);
    return found != classifications.end() &&
           platform::text::lowercased(found->second->source).find(isolatedWord) != std::string::npos;
}

bool qualifiesAsIsolated(const ChannelRouteStats& stats, const ClassificationByTrack& classifications) {
    return stats.speechCoverage >= minIsolatedCoverage && isIsolated(classifications, stats.trackIndex);
}

bool qualifiesByCoverage(const ChannelRouteStats& stats) { return stats.speechCoverage >= minCoverage; }

bool beats(const ChannelRouteStats& newcomer, const ChannelRouteStats& best) {
    if (std::abs(newcomer.speechCoverage - best.speechCoverage) > similarCoverage)
        return newcomer.speechCoverage > best.speechCoverage;
    return newcomer.rmsVarianceDB < best.rmsVarianceDB;
}

} // namespace

ClassificationByTrack byTrack(const std::vector<ChannelClassification>& classifications) {
    ClassificationByTrack found;
    for (const ChannelClassification& one : classifications) found.emplace(one.trackIndex, &one);
    return found;
}

bool qualifiesAsDefault(const ChannelRouteStats& stats, const ClassificationByTrack& classifications) {
    return qualifiesByCoverage(stats) || qualifiesAsIsolated(stats, classifications);
}

std::optional<int> pickTakeDefault(const std::set<int>& candidateTracks, const TakeStatistics& channelStats,
                                   const std::vector<ChannelClassification>& classifications) {
    const auto isCandidate = [&](int track) {
        return candidateTracks.empty() || candidateTracks.contains(track);
    };

    const ClassificationByTrack classified = byTrack(classifications);
    const ChannelRouteStats* steadiest = nullptr;
    for (const auto& [track, stats] : channelStats)
        if (isCandidate(track) && qualifiesAsIsolated(stats, classified) &&
            (steadiest == nullptr || stats.rmsVarianceDB < steadiest->rmsVarianceDB))
            steadiest = &stats;
    if (steadiest != nullptr) return steadiest->trackIndex;

    const ChannelRouteStats* best = nullptr;
    for (const auto& [track, stats] : channelStats)
        if (isCandidate(track) && qualifiesByCoverage(stats) && (best == nullptr || beats(stats, *best)))
            best = &stats;
    if (best != nullptr) return best->trackIndex;
    return std::nullopt;
}

} // namespace orvane::SmartAudioBlockRouter
