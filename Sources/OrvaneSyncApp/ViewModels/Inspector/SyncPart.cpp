#include "OrvaneSyncApp/ViewModels/Inspector/SyncPart.h"

#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace orvane {

namespace {

/// The offset without its unit, as a field shows it.
std::string offsetFramesText(double seconds, double frameRate) {
    std::string text = formatOffset(seconds, frameRate);
    text.pop_back();
    return text;
}

std::string shownFramesText(double seconds, double frameRate) {
    constexpr double leastShown = 0.05; // of a frame
    const double frames = seconds * frameRate;
    return std::abs(frames - std::round(frames)) < leastShown ? offsetFramesText(seconds, frameRate)
                                                              : formatted("%+.1f", frames);
}

/// Empty if the offset is a whole number of frames. The document leaves out the part that is less than a
/// frame.
std::string wholeFramesSentence(double seconds, double frameRate) {
    constexpr double leastShown = 0.0005, rounding = 0.00001; // of a frame
    const double frames = seconds * frameRate;
    const double whole = std::trunc(frames + std::copysign(rounding, frames));
    if (std::abs(frames - whole) < leastShown) return "";
    return "The document takes whole frames: " + formatted("%+.0f.", whole + 0.0);
}

std::string soundBeginsSentence(const SyncGroup& group) {
    if (group.isMOS())
        return group.isLocked ? "No sound, and locked so: unlock it to attach a recording."
                              : "No sound. Ctrl+T attaches a recording.";
    std::string begins = beginsText(group, takeOf(group, assumedChannels));
    if (!begins.ends_with("picture")) begins += " picture";
    const std::string several = recordingCountText(group);
    return "Sound begins " + begins + (several.empty() ? "" : "\n" + several + ", all in the document");
}

constexpr const char* withoutSound = "The clip has no sound.";
constexpr const char* withoutClap = "There is no clap point yet.";
constexpr const char* outOfPicture = "The clap point is outside of the picture.";

/// Seconds from the picture to a clap point outside of it: negative before the picture, positive after its
/// end, 0 within it.
double secondsOutOfPicture(const SyncGroup& group) {
    const auto clap = group.isMOS() ? group.pictureClapAnchorSeconds : group.resolvedClapPointSeconds();
    const auto& length = group.video.durationSeconds;
    if (!clap || !length) return 0;
    return *clap - std::clamp(*clap, 0.0, *length);
}

std::string anchorSentence(const SyncGroup& group, double secondsOut) {
    if (!group.audioAnchorOffsetInAudioSeconds || group.isMOS()) return "No clap point yet";
    if (secondsOut != 0 && !group.pictureClapAnchorSeconds)
        return "No clap within the picture: the clap point is " + formatted("%.3f s", std::abs(secondsOut)) +
               (secondsOut < 0 ? " before its start" : " after its end");
    return formatted("Clap point %.3f s into the recording",
                     *group.audioAnchorOffsetInAudioSeconds + ClipSound(group).primaryStartSeconds);
}

void addReasons(SyncPart& part, double secondsOut) {
    const auto firstOf = [](std::initializer_list<std::pair<bool, std::string>> reasons) {
        for (const auto& [holds, reason] : reasons)
            if (holds) return reason;
        return std::string();
    };
    const std::pair locked(part.isLocked, part.anchorHint);
    const std::pair silent(!part.hasSound, std::string(withoutSound));
    const std::pair missing(!part.hasAnchor, std::string(withoutClap));
    const std::pair outside(secondsOut != 0, std::string(outOfPicture));
    part.whyNoGoTo = firstOf({missing, outside});
    part.whyNoPut =
        firstOf({missing, {part.isLocked, "Unlock sync to move the sound: ⟨lockCurrent⟩ first."}});
    part.whyNoUpdate = firstOf({silent, locked});
    part.whyNoClear = firstOf({missing, locked});
    part.whyNoSearch = firstOf(
        {silent, locked, {part.hasAnchor, "There is a clap point; clear it to search for another one."}});
    part.whyNoCheck = firstOf({outside}); // without a clap point, the loop is at 3 s
}

} // namespace

std::string SyncPart::lockOf(const SyncGroup& group) {
    if (!group.isMOS() && isMovedSinceLock(group)) return "Lock at This Offset";
    if (group.isLocked) return "Unlock";
    return group.isMOS() ? "Lock as without sound" : "Lock";
}

SyncPart SyncPart::of(const SyncGroup& group, double frameRate) {
    SyncPart part;
    part.method = group.syncMethod;
    part.hasSound = !group.isMOS();
    part.isLocked = group.isLocked;
    part.isApproved = group.isApproved;
    part.frameRate = frameRate;
    part.offsetSeconds = group.manualAudioOffsetSeconds;
    part.offsetFrames = offsetFramesText(part.offsetSeconds, part.frameRate);
    part.offsetShown = shownFramesText(part.offsetSeconds, part.frameRate);
    part.offsetInSeconds = formatted("%+.3f", part.offsetSeconds);
    part.begins = soundBeginsSentence(group);
    // The anchor of a recording that was removed is no place in this clip.
    part.hasAnchor = part.hasSound && group.audioAnchorOffsetInAudioSeconds.has_value();
    const double secondsOut = secondsOutOfPicture(group);
    part.anchor = anchorSentence(group, secondsOut);
    if (group.pictureClapAnchorSeconds) // it has priority over that of the sound
        part.anchor += formatted("; in the picture at %.3f s", *group.pictureClapAnchorSeconds);
    part.anchorHint = part.isLocked ? "Unlock sync to move the clap point"
                                    : "⌘⌥ Click on the audio waveform to set the sync anchor";
    addReasons(part, secondsOut);
    part.updateAnchor = part.hasAnchor ? "Update Clap Point" : "Set Clap Point";
    part.lock = lockOf(group);
    part.wholeFrames = wholeFramesSentence(part.offsetSeconds, part.frameRate);
    return part;
}

std::string fpsText(double rate) {
    const std::string text = formatted("%.3f", rate);
    const std::size_t last = text.find_last_not_of('0');
    return text.substr(0, text[last] == '.' ? last : last + 1);
}

SensorPart SensorPart::of(const SyncGroup& group) {
    const MediaAsset& video = group.video;
    SensorPart part;
    part.rates.assign(offered.begin(), offered.end());
    part.rate = video.sensorFrameRate ? video.sensorFrameRate : video.frameRate;
    if (part.rate && std::ranges::find(part.rates, *part.rate) == part.rates.end())
        part.rates.insert(std::ranges::lower_bound(part.rates, *part.rate), *part.rate);
    part.reset = "Reset to detected";
    if (video.frameRate) part.reset += " (" + formatted("%.3g", *video.frameRate) + ")";
    part.isUnconfirmed = video.isSuspectedOffspeedUnconfirmed();
    part.isLocked = group.isLocked;
    part.isOffspeed = video.isOffspeed();
    if (video.sensorFrameRate && video.projectFrameRate) {
        part.speed = fpsText(*video.sensorFrameRate) + " fps in a project of " +
                     fpsText(*video.projectFrameRate) + " fps";
        if (part.isOffspeed)
            part.speed += ": " + fpsText(std::round(video.slowMotionFactor() * 100) / 100) +
                          (video.slowMotionFactor() > 1 ? " times slower" : " times the speed");
    }
    part.generatesNative = group.generateNativeMOSClip;
    part.generatesProjectRate = group.shouldGenerateProjectRateClip();
    return part;
}

} // namespace orvane
