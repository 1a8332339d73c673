#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

std::string progressText(std::string_view what, std::size_t done, std::size_t total) {
    return std::string(what) + ": " + std::to_string(done) + " of " + std::to_string(total) + " clips";
}

/// Such as "+3 frames", or "-1 to +4 frames".
std::string movesText(const std::vector<ComparedSound::Off>& off) {
    const auto signedText = [](long frames) { return (frames > 0 ? "+" : "") + std::to_string(frames); };
    const auto [least, most] = std::ranges::minmax(off, {}, &ComparedSound::Off::frames);
    if (least.frames != most.frames)
        return signedText(least.frames) + " to " + signedText(most.frames) + " frames";
    return signedText(least.frames) + (std::abs(least.frames) == 1 ? " frame" : " frames");
}

} // namespace

std::string comparingText(const SoundComparison::Progress& progress) {
    return progressText("Comparing the sound", progress.done, progress.total);
}

std::string comparedText(const ComparedSound& compared) {
    const auto count = [](std::size_t clips) { return std::to_string(clips); };
    const std::string clips = counted(compared.compared(), "clip", "clips");
    std::string said;
    if (compared.compared() == 0)
        said = "No clip could be compared with the sound of its camera.";
    else if (compared.off.empty())
        said = clips + " compared with the sound of the camera: all are right.";
    else
        said = clips + " compared with the sound of the camera: " + count(compared.right) + " right, " +
               count(compared.off.size()) + " off; to be right, move their sound by " +
               movesText(compared.off) + ".";
    if (compared.notCompared() > 0)
        said += "\nNot compared: " + count(compared.withoutRecording) + " without recording, " +
                count(compared.withoutCameraSound) + " without sound of the camera, " +
                count(compared.unlike.size()) + " too short or unlike the recording.";
    return said;
}

std::string listeningText(const WorkDoubts::Listening& progress) {
    return progressText("Listening to the cards", progress.done, progress.total);
}

std::string roughOffsetText(const WorkDoubts::Listened& listened) {
    return listened.isOffsetRough
               ? "By microphone, the given sound offset can only be checked to one or two frames: "
                 "check a clap."
               : "";
}

std::string heardText(const WorkDoubts::Listened& listened, const NotCompared& notCompared,
                      DoubtsAfterListening doubts) {
    const auto clips = [](std::size_t count) {
        return counted(static_cast<long long>(count), "clip", "clips");
    };
    std::string said;
    const auto say = [&](std::string_view sentence) {
        said += (said.empty() ? "" : "\n");
        said += sentence;
    };
    if (listened.matched == 0 && listened.suggested == 0)
        say("There is nothing to listen to: it takes three matched clips of a card whose camera recorded "
            "sound, or recordings that may belong to clips without sound.");
    if (listened.matched > 0)
        say(listened.heard > 0
                ? "The sound of " + clips(listened.heard) + ", some of each card, was compared."
                : "Of " + clips(listened.matched) +
                      " none sounds plainly like its recording, so that the clocks stay as they are.");
    if (listened.suggested > 0)
        say("For " + clips(listened.suggested) +
            " the camera's sound was looked for in recordings that may belong to it, and found " +
            (listened.found > 0 ? "for " + clips(listened.found) : "nowhere") + ".");
    if (listened.isOffsetRough) say(roughOffsetText(listened));
    if (doubts == DoubtsAfterListening::found)
        say("The doubts are shown above the list.");
    else if (doubts == DoubtsAfterListening::known)
        say("No new doubt was found; the earlier ones are shown above the list.");
    else if (listened.heard > 0)
        say(notCompared.isEmpty() ? "Nothing is in doubt." : "Nothing is in doubt by timecode.");
    if (!notCompared.isEmpty()) say(notCompared.text());
    return said;
}

} // namespace orvane
