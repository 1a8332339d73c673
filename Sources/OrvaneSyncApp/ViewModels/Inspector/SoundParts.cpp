#include "OrvaneSyncApp/ViewModels/Inspector/SoundParts.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncApp/ViewModels/Timeline/TimelineRows.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Takes/ClipRecordings.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace orvane {

namespace {

constexpr double inPercent = 100;

std::string recordingPlaceText(const AudioMatch& match, const SyncGroup& group) {
    const double offset = match.syncOffsetSeconds + group.manualAudioOffsetSeconds;
    constexpr double atOnce = 0.0005;
    std::string text = std::abs(offset) < atOnce
                           ? "begins with the picture"
                           : "begins " + formatted("%.3f s", std::abs(offset)) +
                                 (offset > 0 ? " after the picture" : " before the picture");
    const bool isPlaced = match.overlapDurationSeconds > 0 || match.syncOffsetSeconds != 0;
    if (group.video.durationSeconds && isPlaced)
        text += ", covers " + formatted("%.1f", match.overlapDurationSeconds) +
                formatted(" of %.1f s", *group.video.durationSeconds);
    if (match.audio->channelCount) text += ", " + counted(*match.audio->channelCount, "channel", "channels");
    return text;
}

bool isOutsideOfPicture(const SyncGroup& group) {
    const ClipSound sound(group);
    const auto& length = group.video.durationSeconds;
    return sound.durationSeconds > 0 && length &&
           (sound.offsetSeconds + sound.durationSeconds <= 0 || sound.offsetSeconds >= *length);
}

std::string recordingsPromptOf(const RecordingsPart& part, const SyncGroup& group) {
    if (part.recordings.empty())
        return part.isMeantSilent ? "The clip is meant to have no sound."
                                  : "This clip has no recording. Attach one, or mark the clip as MOS.";
    if (part.isAmbiguous && part.isLocked) return "Unlock sync to choose: ⟨lockCurrent⟩ first.";
    if (part.isAmbiguous && part.recordings.size() > 1)
        return counted(part.recordings.size(), "recording", "recordings") +
               " could belong to this clip. Choose one, or confirm them as they are.";
    if (part.isAmbiguous)
        return group.matchStatus.label() + ". Confirm these recordings, or remove the wrong ones.";
    if (part.isOutside && !part.isLocked)
        return "The sound is outside of the picture. Go to the frame of its clap: P moves the sound there.";
    return "";
}

/// Negative if the recording ends before the clip begins, 0 if they overlap; also across midnight.
double secondsFrom(const FilePlace& clip, const FilePlace& sound) {
    constexpr double secondsOfADay = 86'400;
    const auto filmed = clip.knownDay();
    const double shift = filmed && sound.day ? static_cast<double>(*sound.day - *filmed) * secondsOfADay : 0;
    const double after = sound.range.startSeconds + shift - clip.range.endSeconds;
    return after > 0 ? after : std::min(sound.range.endSeconds + shift - clip.range.startSeconds, 0.0);
}

/// By how many seconds the cures of the doubts would move the recordings.
std::vector<double> movesOf(const std::vector<SyncDoubt>& doubts, const WorkState& work) {
    const MatchRules& rules = work.matchRules();
    const TimecodeFrameRate rate = rules.timecodeRate.value_or(rateOfMostClips(work.syncGroups()));
    std::vector<double> moves;
    for (const SyncDoubt& doubt : doubts)
        for (const DoubtCure::Part& part : doubt.cure.parts())
            if (const auto* way = std::get_if<CureWay>(&part))
                for (const CureOption& option : way->options)
                    if (option.kind == CureOption::Kind::soundOffset && !option.value.empty())
                        moves.push_back(
                            SourceCorrections{.soundOffset = option.value}.soundOffsetSeconds(rate) -
                            rules.soundOffsetSeconds);
    return moves;
}

} // namespace

RecordingsPart RecordingsPart::of(const ImportController& controller, const SyncGroup& group) {
    const FileNames& names = controller.work().fileNames();
    RecordingsPart part;
    part.isLocked = group.isLocked;
    part.isAmbiguous = group.matchStatus.kind == MatchStatus::Kind::ambiguous;
    part.isMeantSilent = group.matchStatus.kind == MatchStatus::Kind::mos;
    for (const auto& positions : recordingsOf(group)) {
        Recording recording{recordingText(group, positions, names), {}};
        for (const std::size_t position : inTakeOrder(group, positions)) {
            const AudioMatch& match = group.audioMatches[position];
            recording.files.push_back({match.id, names.of(*match.audio), recordingPlaceText(match, group)});
        }
        part.recordings.push_back(std::move(recording));
    }
    part.isOutside = isOutsideOfPicture(group);
    part.prompt = recordingsPromptOf(part, group);
    return part;
}

std::vector<Attachable> attachableTo(const ImportController& controller, const UUID& groupID,
                                     const std::vector<SyncDoubt>& doubts) {
    std::vector<Attachable> all;
    for (const WildTrack& track : controller.work().wildTracks())
        all.push_back({track.audio, controller.work().fileNames().of(track.audio) + "  ·  on no clip"});
    for (const MediaAsset& audio : controller.recordings().rawFilesAvailableToAttach(groupID))
        all.push_back({audio, controller.recordings().rawFilesMenuLabel(audio)});
    const auto ofOtherDays = controller.recordings().recordingsOfOtherDays(groupID);
    Places places(controller.work().matchRules());
    const SyncGroup* group = controller.work().syncGroups().find(groupID);
    const auto clip = group != nullptr ? places.of(group->video) : std::nullopt;
    const std::vector<double> moves = movesOf(doubts, controller.work());
    for (Attachable& one : all) {
        one.isSuggested = std::ranges::any_of(doubts, [&](const SyncDoubt& doubt) {
            return doubt.suggestion && doubt.suggestion->recordingID == one.audio.id;
        });
        one.start = one.audio.startTimecodeString.value_or("");
        const auto place = clip ? places.of(one.audio) : std::nullopt;
        if (!place) continue;
        if (ofOtherDays.contains(one.audio.id)) {
            if (!place->day) continue;
            one.day = dayText(*place->day);
            if (!clip->knownDay()) continue; // the distance depends on the day
        }
        one.fromClip = secondsFrom(*clip, *place);
        for (const double seconds : moves) {
            FilePlace moved = *place;
            moved.range.startSeconds += seconds;
            moved.range.endSeconds += seconds;
            if (secondsFrom(*clip, moved) == 0) one.isSuggested = true;
        }
    }
    std::ranges::stable_sort(all, {}, [&](const Attachable& one) {
        return std::tuple(!one.isSuggested, ofOtherDays.contains(one.audio.id), !one.fromClip,
                          std::abs(one.fromClip.value_or(0)));
    });
    return all;
}

ChannelsPart ChannelsPart::of(const ImportController& controller, const SyncGroup& group) {
    const SmartAudioState& state = controller.smartAudio().state();
    const auto found = state.results.find(group.id);
    const SmartAudioResult* result = found == state.results.end() ? nullptr : &*found->second;
    ChannelsPart part;
    part.isAnalysed = state.results.heard(group.id) != nullptr;
    part.isChosenByHand = group.hasManualTrackEdits();
    for (const TimelineChannel& of : timelineChannels(group, state)) {
        Channel channel;
        channel.track = of.track;
        channel.name = std::to_string(of.track);
        if (of.isNamed) channel.name += "  " + of.name;
        channel.kind = of.kindAndWhyText();
        channel.share = of.shareText();
        channel.ranges = of.rangesText();
        channel.isActive = of.isActive;
        channel.isAllowed = of.isUsedByAlgorithm;
        channel.isSolo = of.isSolo;
        if (result != nullptr) {
            const auto own = std::ranges::find(result->tracks, of.track, &TrackAdjustment::trackIndex);
            if (own != result->tracks.end() && own->volumeGainDB)
                channel.gain = formatted("%+.1f dB", static_cast<double>(*own->volumeGainDB));
        }
        part.channels.push_back(std::move(channel));
    }
    part.summary = smartAudioSummary(group, state, *controller.work().environment.settings);
    constexpr float musical = 0.3F;
    if (result != nullptr && result->stemMetrics && result->stemMetrics->musicProbability > musical)
        part.music =
            "Music detected (" +
            formatted("%.0f", static_cast<double>(result->stemMetrics->musicProbability) * inPercent) +
            "%) — using conservative routing";
    return part;
}

LoudnessPart LoudnessPart::of(const SyncGroup& group, const MasterGain::Target& target,
                              const SmartAudioPredictor& predictor) {
    const double measured = group.measuredLUFS.value_or(MasterGain::unmeasuredLUFS);
    const SmartAudioPrediction forecast = predictor.predict(measured, target.preset, target.targetLUFS);
    LoudnessPart part;
    part.isMeasured = group.measuredLUFS.has_value();
    part.isAutomatic = group.masterGainAuto;
    part.source = part.isMeasured ? formatted("%.0f LUFS", measured) : "not measured";
    part.preset = target.preset.menuText();
    part.target = formatted("%.0f LUFS", target.targetLUFS);
    part.gainDB = group.masterGainDB;
    part.gain = formatted("%+.1f dB", part.gainDB);
    if (part.isMeasured) part.forecast = formatted("%.1f LUFS", forecast.postProcessingLUFS + part.gainDB);
    constexpr double risky = 12;
    if (part.gainDB > risky)
        part.warning =
            "Master Gain > +12 dB — risk of clipping. Source is very quiet; consider switching to the "
            "Documentary preset.";
    if (!predictor.isCalibrated())
        part.estimation = "Smart Audio is using estimated values. Run Settings → Calibration once for "
                          "production-accurate predictions.";
    return part;
}

} // namespace orvane
