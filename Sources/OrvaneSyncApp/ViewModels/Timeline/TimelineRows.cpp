#include "OrvaneSyncApp/ViewModels/Timeline/TimelineRows.h"

#include "OrvaneSyncApp/Controllers/SmartAudioCaches.h"
#include "OrvaneSyncApp/Controllers/TimelineController.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Review/AlternateAudio.h"
#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "OrvaneSyncCore/Services/SmartAudio/ActiveTracks.h"
#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace orvane {

namespace {

using platform::text::formatted;

std::string trackText(const TimelineRows& rows, int track) {
    const TimelineChannel* channel = rows.channel(track);
    return "T" + std::to_string(track) + (channel == nullptr ? "" : " " + channel->name);
}

std::string rangeText(double start, double end) { return momentText(start) + " – " + momentText(end); }

void addLine(std::string& text, const std::string& line) {
    if (line.empty()) return;
    if (!text.empty()) text += '\n';
    text += line;
}

/// How much of the take's block time is routed to each track, in seconds.
std::map<int, double> secondsByTrack(const std::vector<BlockDecision>& blocks) {
    std::map<int, double> seconds;
    for (const BlockDecision& block : blocks)
        seconds[block.activeTrack] += block.endSeconds - block.startSeconds;
    return seconds;
}

/// The files of the take have channel rows; the other recordings of the clip are on lanes.
void addRecordings(TimelineRows& rows, const SyncGroup& group, const Take& take, const FileNames& names) {
    const std::vector<int> lanes = alternateAudioLanes(group);
    std::map<int, int> dense; // numbers of the lanes without those of the take's own files
    for (const TakeFile& file : take.files)
        if (!isHeard(file.role) && file.matchIndex > 0) dense.emplace(lanes[file.matchIndex - 1], 0);
    for (auto& [lane, row] : dense) row = rows.laneCount++;
    for (const TakeFile& file : take.files) {
        if (isHeard(file.role) || file.matchIndex == 0) continue;
        const double start = rows.soundOffset + file.startSeconds;
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        rows.recordings.push_back({.matchID = match.id,
                                   .name = names.of(*match.audio),
                                   .lane = dense.at(lanes[file.matchIndex - 1]),
                                   .startSeconds = start,
                                   .endSeconds = start + file.durationSeconds});
    }
}

} // namespace

std::string TimelineChannel::kindText() const {
    if (!kind) return {};
    switch (*kind) {
    case ChannelKind::boom:
        return "Boom";
    case ChannelKind::lav:
        return "Lav";
    case ChannelKind::mix:
        return "Mix";
    case ChannelKind::unknown:
        break;
    }
    return "Unknown";
}

std::string TimelineChannel::kindAndWhyText() const {
    return kindText() + (kind && !why.empty() ? " · " + why : "");
}

std::string TimelineChannel::shareText() const {
    return sharePercent
               ? "Algorithm picks this channel for " + std::to_string(*sharePercent) + "% of the take"
               : "";
}

std::string TimelineChannel::rangesText() const {
    return rangeCount > 0 ? std::to_string(rangeCount) + " manual range override(s) on this channel" : "";
}

std::string TimelineChannel::tooltip() const {
    std::string text = "T" + std::to_string(track) + " " + name;
    for (const std::string& line : {kindAndWhyText(), shareText(), rangesText()}) addLine(text, line);
    return text;
}

void TimelineRows::moveSound(double offsetSeconds) {
    const double by = offsetSeconds - soundOffset;
    soundOffset = offsetSeconds;
    if (anchorSeconds) *anchorSeconds += by;
    for (TimelineRecording& one : recordings) {
        one.startSeconds += by;
        one.endSeconds += by;
    }
}

const TimelineChannel* TimelineRows::channel(int track) const {
    const bool isThere = track >= 1 && static_cast<std::size_t>(track) <= channels.size();
    return isThere ? &channels[static_cast<std::size_t>(track - 1)] : nullptr;
}

std::string TimelineRows::shiftText(double seconds) const {
    return formatted("%+.3f s", seconds) + " · " + formatOffset(seconds, frameRate);
}

std::string TimelineRows::tooltip(const BlockDecision& block) const {
    std::string text = trackText(*this, block.activeTrack);
    if (block.secondaryTrack) text += " + " + trackText(*this, *block.secondaryTrack);
    if (block.kind == BlockKind::multiActiveWarn) text += "  " + std::string(multiActiveWarnLabel);
    addLine(text, rangeText(block.startSeconds + soundOffset, block.endSeconds + soundOffset));
    addLine(text, block.reason);
    addLine(text, "Peak " + formatted("%.1f", block.peakDB) + " dB · gain ×" +
                      formatted("%.2f", block.gainMultiplier));
    return text;
}

std::string TimelineRows::tooltip(const BlockOverride& range) const {
    return trackText(*this, range.trackIndex) + " by hand\n" +
           rangeText(range.startSeconds, range.endSeconds) +
           "\nDrag an edge to move it; Delete removes the range.";
}

std::string TimelineRows::tooltip(const TimelineRecording& recording) const {
    return recording.name + "\n" + rangeText(recording.startSeconds, recording.endSeconds);
}

std::vector<TimelineChannel> timelineChannels(const SyncGroup& group, const SmartAudioState& smartAudio) {
    const Take take = takeOf(group, assumedChannels);
    const SmartAudioResult* result = smartAudio.results.heard(group.id);
    std::vector<TimelineChannel> channels;
    for (int track = 1; track <= take.channelCount; ++track)
        channels.push_back({.track = track, .name = "Track " + std::to_string(track)});
    const auto at = [&](int track) {
        return track >= 1 && track <= take.channelCount ? &channels[static_cast<std::size_t>(track - 1)]
                                                        : nullptr;
    };
    for (const IXMLTrack& named : namedChannels(group, take))
        if (auto* channel = at(named.channelIndex)) {
            channel->name = named.name;
            channel->isNamed = true;
        }
    if (result != nullptr) {
        for (const ChannelClassification& one : result->channelClassifications)
            if (auto* channel = at(one.trackIndex)) {
                channel->kind = one.kind;
                channel->why = one.source;
            }
        const auto seconds = secondsByTrack(result->blocks);
        double all = 0;
        for (const auto& [track, part] : seconds) all += part;
        constexpr double percent = 100;
        for (TimelineChannel& channel : channels) {
            const auto found = seconds.find(channel.track);
            const double part = found == seconds.end() ? 0 : found->second;
            if (all > 0) channel.sharePercent = static_cast<int>(std::lround(part / all * percent));
        }
    }
    const auto solo = smartAudio.soloMonitorTracks.find(group.id);
    // In the form that the document has.
    const auto known = smartAudio.results.find(group.id);
    const std::set<int> active =
        activeTracks(group, known == smartAudio.results.end() ? nullptr : &*known->second);
    for (TimelineChannel& channel : channels) {
        channel.isUsedByAlgorithm = !group.algorithmExcludedTracks.contains(channel.track);
        channel.isActive = active.contains(channel.track);
        const bool isSoloSet = solo != smartAudio.soloMonitorTracks.end();
        channel.isSolo = isSoloSet && solo->second == channel.track;
        channel.isMuted = isSoloSet && !channel.isSolo;
        channel.rangeCount = static_cast<int>(
            std::ranges::count(group.manualBlockOverrides, channel.track, &BlockOverride::trackIndex));
    }
    return channels;
}

std::string smartAudioSummary(const SyncGroup& group, const SmartAudioState& state,
                              const platform::SettingsStore& settings) {
    if (state.isAnalyzing && state.progress.total > 0) {
        constexpr double percent = 100;
        return state.progress.phase + " · " + std::to_string(state.progress.current) + " of " +
               std::to_string(state.progress.total) +
               formatted(" · %.0f %%", state.progress.fraction * percent);
    }
    const SmartAudioResult* result = state.results.heard(group.id);
    if (result == nullptr) {
        if (state.results.contains(group.id))
            return "Smart Audio could not read the recording — check that its card is connected, and run it "
                   "again";
        const auto ofTake = static_cast<std::size_t>(takeOf(group, assumedChannels).channelCount);
        const bool areAllOn = group.manualActiveTracks.empty() ||
                              (group.manualActiveTracks.size() == ofTake && !group.hasManualTrackEdits());
        if (areAllOn) return "All tracks active — run Smart Audio for recommendation";
        return group.hasManualTrackEdits()
                   ? "Tracks chosen by hand"
                   : "An earlier analysis chose the channels — run Smart Audio to see why";
    }
    if (settings.get(settings::bestChannelMode) == BestChannelMode::perClip && result->bestTrackIndex)
        return "Smart Audio chose Track " + std::to_string(*result->bestTrackIndex);
    return "Smart Audio active";
}

TimelineRows timelineRows(const SyncGroup& group, double frameRate, const SmartAudioState& smartAudio,
                          const platform::SettingsStore& settings, const FileNames& names,
                          const SmartAudioTerms* madeWith) {
    TimelineRows rows;
    rows.groupID = group.id;
    rows.pictureName = names.of(group.video);
    rows.clipSeconds = group.video.durationSeconds.value_or(0);
    rows.frameRate = frameRate;
    rows.isLocked = group.isLocked;
    rows.pictureClapSeconds = group.pictureClapAnchorSeconds;
    rows.hasSound = !group.isMOS();
    if (!rows.hasSound) return rows;

    const ClipSound sound(group);
    rows.soundOffset = sound.offsetSeconds;
    rows.soundSeconds = sound.durationSeconds;
    rows.primaryStart = sound.primaryStartSeconds;
    if (group.audioAnchorOffsetInAudioSeconds)
        rows.anchorSeconds = sound.primaryOffsetSeconds() + *group.audioAnchorOffsetInAudioSeconds;
    const SmartAudioResult* result = smartAudio.results.heard(group.id);
    const Take take = takeOf(group, assumedChannels);
    rows.soundName = filesText(group, take, names);
    rows.channels = timelineChannels(group, smartAudio);
    rows.isAnalysed = result != nullptr;
    if (result != nullptr) rows.blocks = result->blocks;
    rows.ranges = group.manualBlockOverrides;
    std::ranges::stable_sort(rows.ranges, {}, &BlockOverride::startSeconds);
    addRecordings(rows, group, take, names);
    rows.summary = smartAudioSummary(group, smartAudio, settings);
    // The block mode is that of the analysis, even if the settings have changed since.
    if (result != nullptr && !smartAudio.isAnalyzing && madeWith != nullptr)
        rows.summary += " · " + badgeLabel(madeWith->blockSettings.blockMode, result->detectedCharacter);
    return rows;
}

double tileOpacity(const BlockDecision& block) {
    constexpr double manual = 1, silent = 0.08, routed = 0.55;
    if (block.reason.starts_with(SmartAudioBlockRouter::manualOverrideReason)) return manual;
    return block.kind == BlockKind::silence ? silent : routed;
}

std::string momentText(double seconds) {
    constexpr double hundredths = 100, perMinute = 60;
    const double rounded = std::round(std::abs(seconds) * hundredths) / hundredths;
    const double minutes = std::floor(rounded / perMinute);
    return (seconds < 0 && rounded > 0 ? "-" : "") + formatted("%.0f", minutes) + ":" +
           formatted("%05.2f", rounded - minutes * perMinute);
}

bool isSoundUnreadable(const TimelineController& timeline) {
    const WaveformState& waveform = *timeline.waveform();
    return timeline.isWaveformWanted() && !waveform.isLoading() && waveform.waveform().binsPerSecond <= 0;
}

} // namespace orvane
