#include "OrvaneSyncApp/ViewModels/Review/PictureTexts.h"

#include "OrvaneSyncCore/Services/Review/SiblingSuggestion.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Playback/Mixer.h"

#include <algorithm>
#include <filesystem>

namespace orvane {

std::optional<PictureNote> pictureNote(const SyncGroup* clip, VideoEngine& engine, bool isHelperMissing) {
    if (clip == nullptr)
        return PictureNote{"No clip is open", "Choose one at the left, or a take for all its cameras."};
    if (engine.output().system() == nullptr)
        return PictureNote{"Pictures and sound cannot be played", "'orvanesync doctor' says why."};
    if (engine.transport().isLoading) return std::nullopt;
    const bool hasPicture = engine.transport().isLoaded && engine.player()->facts().hasPicture;
    if (!hasPicture && isHelperMissing)
        return PictureNote{
            "No clip shows its picture",
            "The program orvane_media_helper, which decodes them, is missing or does not start. "
            "Install OrvaneSync again with it; 'orvanesync doctor' says more. Sound in WAVE files "
            "plays, and the document can be written all the same."};
    if (engine.transport().isVideoMissing) {
        const FileURL folder{std::filesystem::path(clip->video.url.path).parent_path().string()};
        return PictureNote{"The camera file is missing",
                           clip->video.filename + " is not in its folder, " + folder.lastPathComponent() +
                               ". Connect its disk or put the file back. The document "
                               "names the file all the same.",
                           true};
    }
    if (!engine.transport().isLoaded)
        return PictureNote{"The clip cannot be played",
                           clip->video.filename +
                               " holds no picture and no sound that can be read. "
                               "Look at the file in another program, or export the clip as it is.",
                           true};
    if (!hasPicture)
        return PictureNote{
            "Sound only",
            clip->video.filename +
                " holds no picture that can be decoded. Its sound plays, and the document names "
                "the file all the same."};
    return std::nullopt;
}

std::string unseenDecisionsText(const SyncGroup& clip, double frameRate) {
    return "Decisions are kept: sound at " + formatOffset(clip.manualAudioOffsetSeconds, frameRate) +
           (clip.isLocked ? ", locked." : ", not locked.");
}

std::optional<std::string> soundNote(VideoEngine& engine) {
    const auto& players = engine.output().system();
    const auto mixer = players ? players->mixer() : nullptr;
    constexpr std::string_view withoutDevice = "no sound device"; // the name of an output without a device
    if (!mixer || mixer->output().description() != withoutDevice) return std::nullopt;
    return "Nothing is heard: the machine has no sound device. Connect one, or choose one in the settings of "
           "the "
           "system; playback continues on it automatically.";
}

namespace {

/// The first sample of the recording, as seconds on the wall clock.
std::optional<double> startSeconds(const MediaAsset& audio, TimecodeFrameRate rateOfPicture) {
    if (audio.bextTimeReference && audio.sampleRate && *audio.sampleRate > 0)
        return TimecodeUtils::bextToSeconds(*audio.bextTimeReference, *audio.sampleRate);
    if (!audio.startTimecodeString) return std::nullopt;
    const auto start =
        Timecode::fromString(*audio.startTimecodeString, audio.timecodeFrameRate.value_or(rateOfPicture));
    return start ? std::optional(start->realTimeValue()) : std::nullopt;
}

std::int64_t frameAt(double seconds, const PlayheadState& playhead) {
    return platform::MediaTime::fromSeconds(seconds).wholeUnits(playhead.frameLength());
}

constexpr double rounding = 1e-6; ///< seconds

/// The playhead, after the end on the last frame.
PlayheadState atShownFrame(PlayheadState playhead) {
    const std::int64_t shown = shownFrame(playhead);
    if (shown < frameAt(playhead.seconds() + rounding, playhead))
        playhead.time = playhead.frameLength() * shown;
    return playhead;
}

} // namespace

std::int64_t shownFrame(const PlayheadState& playhead) {
    const std::int64_t frame = frameAt(playhead.seconds() + rounding, playhead);
    return playhead.clipDuration > 0 ? std::min(frame, frameAt(playhead.clipDuration - rounding, playhead))
                                     : frame;
}

std::string pictureTimecode(const PlayheadState& playhead) { return atShownFrame(playhead).timecodeString(); }

std::string soundTimecode(const SyncGroup& clip, const PlayheadState& at) {
    const PlayheadState playhead = atShownFrame(at);
    constexpr const char* none = "--:--:--:--";
    const MediaAsset* audio = clip.primaryAudio();
    if (audio == nullptr) return none;
    const TimecodeFrameRate rate =
        playhead.timecodeRate.value_or(TimecodeUtils::frameRate(playhead.frameRate));
    const auto start = startSeconds(*audio, rate);
    const double inAudio = playhead.seconds() - ClipSound(clip).primaryOffsetSeconds();
    const bool isThere = inAudio >= 0 && (!audio->durationSeconds || inAudio <= *audio->durationSeconds);
    if (!start || !isThere) return none;
    return TimecodeUtils::secondsToTC(*start + inAudio, rate);
}

} // namespace orvane
