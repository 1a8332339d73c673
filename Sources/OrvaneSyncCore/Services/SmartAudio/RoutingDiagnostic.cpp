#include "OrvaneSyncCore/Services/SmartAudio/RoutingDiagnostic.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeDefault.h"
#include "Platform/Files.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

/// Enough for several runs over long recordings with many channels, and small enough to be rewritten after
/// each analysis.
constexpr std::uint64_t largestReportBytes = std::uint64_t{2} << 20U;
constexpr std::string_view finalHeading = "\n=== FINAL CONSOLIDATED BLOCKS (= what the strip shows) ===\n";
constexpr int reportedWindowStep = 50;

std::string decibels(double value) { return formatted("%6.1f", value) + " dB"; }
/// Track names are read from files and may contain any bytes.
std::string printable(std::string_view text) { return platform::text::printable(text); }

std::string candidateList(const std::set<int>& candidateTracks) {
    if (candidateTracks.empty()) return "ALL";
    std::string list;
    for (const int track : candidateTracks) list += (list.empty() ? "" : ", ") + std::to_string(track);
    return "[" + list + "]";
}

std::string classificationLines(std::vector<ChannelClassification> classifications) {
    std::ranges::stable_sort(classifications, {}, &ChannelClassification::trackIndex);
    std::string text;
    for (const ChannelClassification& c : classifications)
        text += "  " + trackName(c.trackIndex) + " | " + std::string(rawValue(c.kind)) + " | " +
                formatted("%.2f", c.confidence) + " | " + printable(c.source) + "\n";
    return text;
}

std::string statisticsLines(const TakeStatistics& channelStats) {
    std::string text;
    for (const auto& [track, stats] : channelStats)
        text += "  " + trackName(track) + " | " + decibels(stats.noiseFloorDB) + " | " +
                decibels(stats.typicalCrestFactorDB) + " | " + formatted("%.2f", stats.takeDominance) + "\n";
    return text;
}

std::string channelLine(const WindowMetrics& window, const TrackRoles& roles,
                        const TakeStatistics& channelStats) {
    const double rmsDB = levelDB(window.rms, windowLevelFloor);
    const double peakDB = levelDB(window.peakAbs, windowLevelFloor);
    return "  " + trackName(window.trackIndex) + " [" +
           std::string(rawValue(roles.kindOf(window.trackIndex))) + "] rms " + decibels(rmsDB) + " · peak " +
           decibels(peakDB) + " · crest " + decibels(peakDB - rmsDB) + " · snr " +
           decibels(snrDB(rmsDB, window.trackIndex, channelStats)) +
           " · hasSpeech=" + (window.hasSpeech ? "true" : "false") + "\n";
}

std::string decisionLine(const PerWindowOutcome& outcome) {
    std::string tracks = trackName(outcome.activeTrack);
    if (outcome.secondaryTrack) tracks += " + " + trackName(*outcome.secondaryTrack);
    return "  → " + tracks + " [" + std::string(rawValue(outcome.kind)) +
           "]  reason: " + printable(outcome.reason) + "\n";
}

std::string sourceOf(int track, const ClassificationByTrack& classifications) {
    const auto found = classifications.find(track);
    return found == classifications.end() ? "not classified" : printable(found->second->source);
}

/// In descending order of duration, then by track.
std::vector<std::pair<int, double>> secondsByTrack(const std::vector<BlockDecision>& blocks) {
    std::map<int, double> seconds;
    for (const BlockDecision& block : blocks)
        seconds[block.activeTrack] += block.endSeconds - block.startSeconds;
    std::vector<std::pair<int, double>> tracks(seconds.begin(), seconds.end());
    std::ranges::stable_sort(tracks, std::ranges::greater(), &std::pair<int, double>::second);
    return tracks;
}

/// The whole report, or as much as the limit allows: from the first heading of the newest runs, or from the
/// beginning of a line if a single run is longer.
std::string newestPart(const platform::RandomAccessFile& file) {
    const std::uint64_t bytes = std::min(file.size(), largestReportBytes);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    text.resize(file.readInto(file.size() - bytes, std::as_writable_bytes(std::span(text))));
    if (bytes == file.size()) return text;
    const std::size_t heading = text.find(finalHeading);
    text.erase(0, (heading != std::string::npos ? heading : text.find('\n')) + 1);
    return text;
}

} // namespace

std::string windowReport(std::span<const PerWindowFrame> frames,
                         const std::vector<ChannelClassification>& classifications,
                         const TakeStatistics& channelStats, const std::set<int>& candidateTracks,
                         const std::vector<WindowDecision>& decisions) {
    std::string text = "=== Smart-Audio routing diagnostic ===\n";
    text += "Frames: " + std::to_string(frames.size()) +
            " · windowSec: see caller · candidates: " + candidateList(candidateTracks) + "\n\n";
    text += "CLASSIFICATIONS (kind / confidence / source):\n" + classificationLines(classifications) + "\n";
    text += "CHANNEL STATS:\n  T# | noiseFloor | typCrest | takeDominance\n" + statisticsLines(channelStats);
    text += "\nPER-WINDOW SCORES (every 50th window for brevity):\n";

    const TrackRoles roles = TrackRoles::of(classifications);
    const std::size_t count = std::min(frames.size(), decisions.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (frames[i].index % reportedWindowStep != 0) continue;
        text += "Window " + std::to_string(frames[i].index) + " (" +
                formatted("%.2f", frames[i].index * smartAudioWindowSeconds) + "s):\n";
        for (const WindowMetrics& window : frames[i].perChannel)
            text += channelLine(window, roles, channelStats);
        text += decisionLine(decisions[i].outcome);
    }
    return text;
}

std::string blockReport(const std::vector<BlockDecision>& blocks, std::optional<int> takeDefault,
                        bool isBySpeaker, const std::vector<ChannelClassification>& classifications) {
    const ClassificationByTrack classified = byTrack(classifications);
    std::string text(finalHeading);
    text += takeDefault ? "Take-default: " + trackName(*takeDefault) + " (" +
                              sourceOf(*takeDefault, classified) + ")\n"
            : isBySpeaker ? "Take-default: NONE — routed by who speaks\n"
                          : "Take-default: NONE — fell through to per-window scoring\n";

    const auto tracks = secondsByTrack(blocks);
    double total = 0;
    for (const auto& [track, seconds] : tracks) total += seconds;
    text += "Track distribution by duration:\n";
    for (const auto& [track, seconds] : tracks)
        text += "  " + trackName(track) + ": " + formatted("%5.1f", seconds) + "s (" +
                formatted("%5.1f", total > 0 ? seconds / total * 100 : 0) + "%)  " +
                sourceOf(track, classified) + "\n";

    text += "Block list (start → end · track · kind · reason):\n";
    for (const BlockDecision& block : blocks)
        text += "  " + formatted("%6.2f", block.startSeconds) + " → " + formatted("%6.2f", block.endSeconds) +
                " s · " + trackName(block.activeTrack) + " [" + std::string(rawValue(block.kind)) + "] · " +
                printable(block.reason) + "\n";
    return text;
}

void replaceReport(const std::string& path, std::string_view text) {
    if (path.empty()) return;
    try {
        platform::files::writeAtomically(path, text);
    } catch (const platform::FileError&) {
        return;
    }
}

void appendToReport(const std::string& path, std::string_view text) {
    if (path.empty()) return;
    if (const auto file = platform::RandomAccessFile::open(path))
        replaceReport(path, newestPart(*file).append(text));
}

} // namespace orvane::SmartAudioBlockRouter
