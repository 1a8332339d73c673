#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include <utility>

namespace orvane {

std::string listeningText(const WorkDoubts::Listening& progress) {
    return "Listening to the cards: " + std::to_string(progress.done) + " of " +
           std::to_string(progress.total) + " clips";
}

std::string roughOffsetText(const WorkDoubts::Listened& listened) {
    return listened.isOffsetRough
               ? "Microphones tell the sound offset that was given to a frame or two only: "
                 "check a clap."
               : "";
}

std::string heardText(const WorkDoubts::Listened& listened, DoubtsAfterListening doubts) {
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
        say(listened.notCompared.isEmpty() ? "Nothing is in doubt." : "Nothing is in doubt by timecode.");
    if (!listened.notCompared.isEmpty()) say(listened.notCompared.text());
    return said;
}

} // namespace orvane
