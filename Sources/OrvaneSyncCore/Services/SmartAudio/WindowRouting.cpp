#include "OrvaneSyncCore/Services/SmartAudio/WindowRouting.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double minScoredLevelDB = -45.0;
constexpr double referenceSNRDB = 20.0; // at this value the score is the level itself
constexpr double scorePerSNRDB = 0.4;
constexpr double maxSNRScore = 10.0;  // upper and lower limit
constexpr double similarLavsDB = 6.0; // two lavaliers with a smaller difference are both in use

using Channels = std::vector<const WindowMetrics*>;

Channels candidatesIn(const PerWindowFrame& frame, const std::set<int>& candidateTracks) {
    Channels channels;
    channels.reserve(frame.perChannel.size());
    for (const WindowMetrics& window : frame.perChannel)
        if (candidateTracks.empty() || candidateTracks.contains(window.trackIndex))
            channels.push_back(&window);
    return channels;
}

std::vector<Score> scoresOf(const Channels& channels, const TrackRoles& roles,
                            const TakeStatistics& channelStats) {
    std::vector<Score> scores;
    for (const WindowMetrics* window : channels) {
        const double rmsDB = levelDB(window->rms, windowLevelFloor);
        if (!window->hasSpeech || !(rmsDB >= minScoredLevelDB)) continue;
        const double snr = snrDB(rmsDB, window->trackIndex, channelStats);
        const double bonus = std::clamp((snr - referenceSNRDB) * scorePerSNRDB, -maxSNRScore, maxSNRScore);
        scores.push_back({window->trackIndex, roles.kindOf(window->trackIndex), rmsDB, snr, rmsDB + bonus});
    }
    return scores;
}

int fallbackTrack(const Channels& channels, const TrackRoles& roles) {
    if (!roles.boomTracks.empty()) return roles.boomTracks.front();
    if (!roles.mixTracks.empty()) return roles.mixTracks.front();
    const auto loudest = std::ranges::max_element(channels, {}, &WindowMetrics::rms);
    return loudest == channels.end() ? 0 : (*loudest)->trackIndex;
}

/// The two loudest tracks that are known to be lavaliers, louder first. Absent if there are fewer than two.
std::optional<std::pair<Score, Score>> topLavs(const std::vector<Score>& scores, const TrackRoles& roles) {
    std::vector<Score> lavs;
    for (const Score& score : scores)
        if (score.kind == BlockKind::lav && roles.lavTracks.contains(score.trackIndex)) lavs.push_back(score);
    if (lavs.size() < 2) return std::nullopt;
    std::ranges::stable_sort(lavs, std::ranges::greater(), &Score::rmsDB);
    return std::pair{lavs[0], lavs[1]};
}

/// One person with two lavaliers, or two people who speak at the same time.
PerWindowOutcome decideSimilarLavs(const Score& first, const Score& second, const std::vector<Score>& scores,
                                   const TrackRoles& roles) {
    const auto nameOf = [&](const Score& score) {
        const auto found = roles.speakerByTrack.find(score.trackIndex);
        return found == roles.speakerByTrack.end() ? std::string() : found->second;
    };
    const std::string firstName = nameOf(first);
    const std::string secondName = nameOf(second);
    const bool areNamed = !firstName.empty() && !secondName.empty();
    const std::string delta = "Δ" + formatted("%.1f", first.rmsDB - second.rmsDB) + " dB";

    if (areNamed && firstName == secondName)
        return {first.trackIndex, std::nullopt, BlockKind::lav,
                "two lavs (" + firstName + ") — bleed " + delta};
    const auto mix = std::ranges::find(scores, BlockKind::mix, &Score::kind);
    if (mix != scores.end()) {
        const std::string who = areNamed ? firstName + " + " + secondName : "RMS-similar lavs " + delta;
        return {mix->trackIndex, std::nullopt, BlockKind::mix, "multi-speaker (" + who + ") → Mix"};
    }
    return {first.trackIndex, second.trackIndex, BlockKind::multiActiveWarn,
            "multi-speaker, no Mix — phase risk"};
}

PerWindowOutcome decideByScore(const std::vector<Score>& scores) {
    const Score& best = *std::ranges::max_element(scores, {}, &Score::total);
    return {best.trackIndex, std::nullopt, best.kind,
            "score " + formatted("%.1f", best.total) + " [rms " + formatted("%.1f", best.rmsDB) + " · snr +" +
                formatted("%.1f", best.snrDB) + " · clean +0.0]"};
}

std::vector<Run> runsOf(const std::vector<WindowDecision>& perWindow) {
    std::vector<Run> runs;
    for (const auto& [window, outcome] : perWindow) {
        if (runs.empty() || runs.back().outcome != outcome) runs.push_back({window, window, outcome});
        runs.back().endWindow = window + 1;
    }
    return runs;
}

} // namespace

TrackRoles TrackRoles::of(const std::vector<ChannelClassification>& classifications) {
    TrackRoles roles;
    for (const ChannelClassification& classification : classifications) {
        const int track = classification.trackIndex;
        switch (classification.kind) {
        case ChannelKind::boom:
            roles.boomTracks.push_back(track);
            roles.kindByTrack.emplace(track, BlockKind::boom);
            break;
        case ChannelKind::lav:
            roles.lavTracks.insert(track);
            break;
        case ChannelKind::mix:
            roles.mixTracks.push_back(track);
            roles.kindByTrack.emplace(track, BlockKind::mix);
            break;
        case ChannelKind::unknown:
            break;
        }
        if (classification.speakerName && !classification.speakerName->empty())
            roles.speakerByTrack[track] = *classification.speakerName;
    }
    return roles;
}

BlockKind TrackRoles::kindOf(int track) const {
    const auto found = kindByTrack.find(track);
    return found == kindByTrack.end() ? BlockKind::lav : found->second;
}

double snrDB(double rmsDB, int track, const TakeStatistics& channelStats) {
    const auto stats = channelStats.find(track);
    return stats == channelStats.end() ? 0 : rmsDB - stats->second.noiseFloorDB;
}

PerWindowOutcome decideOneWindow(const PerWindowFrame& frame, const TrackRoles& roles,
                                 const TakeStatistics& channelStats, const std::set<int>& candidateTracks) {
    const Channels channels = candidatesIn(frame, candidateTracks);
    const std::vector<Score> scores = scoresOf(channels, roles, channelStats);
    if (scores.empty())
        return {fallbackTrack(channels, roles), std::nullopt, BlockKind::silence,
                "no speech above floor — keeping fallback track"};
    if (const auto lavs = topLavs(scores, roles))
        if (lavs->first.rmsDB - lavs->second.rmsDB <= similarLavsDB)
            return decideSimilarLavs(lavs->first, lavs->second, scores, roles);
    return decideByScore(scores);
}

std::vector<WindowDecision> perWindowDecisions(std::span<const PerWindowFrame> frames,
                                               const TrackRoles& roles, const TakeStatistics& channelStats,
                                               const std::set<int>& candidateTracks) {
    std::vector<WindowDecision> decisions;
    decisions.reserve(frames.size());
    for (const PerWindowFrame& frame : frames)
        decisions.push_back({frame.index, decideOneWindow(frame, roles, channelStats, candidateTracks)});
    return decisions;
}

std::vector<BlockDecision> consolidateRuns(const std::vector<WindowDecision>& perWindow, double windowSeconds,
                                           double minBlockSeconds) {
    std::vector<Run> kept;
    for (Run& run : runsOf(perWindow)) {
        const double seconds = static_cast<double>(run.endWindow - run.startWindow) * windowSeconds;
        if (!kept.empty() && seconds < minBlockSeconds)
            kept.back().endWindow = run.endWindow;
        else
            kept.push_back(std::move(run));
    }

    std::vector<BlockDecision> blocks;
    blocks.reserve(kept.size());
    for (Run& run : kept)
        blocks.push_back({.startSeconds = static_cast<double>(run.startWindow) * windowSeconds,
                          .endSeconds = static_cast<double>(run.endWindow) * windowSeconds,
                          .activeTrack = run.outcome.activeTrack,
                          .secondaryTrack = run.outcome.secondaryTrack,
                          .kind = run.outcome.kind,
                          .gainMultiplier = 1.0,
                          .peakDB = 0.0,
                          .reason = std::move(run.outcome.reason)});
    return blocks;
}

} // namespace orvane::SmartAudioBlockRouter
