#include "OrvaneSyncApp/ViewModels/Results/ListeningTexts.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

namespace orvane {

std::string listeningText(std::size_t done, std::size_t total) {
    return "Listening to the cards: " + std::to_string(done) + " of " + std::to_string(total) + " clips";
}

std::string heardText(std::size_t heard, std::size_t total, bool isInDoubt) {
    if (total == 0)
        return "There is nothing to listen to: it takes three clips of a card whose camera recorded sound.";
    if (heard == 0)
        return "Of " + counted(static_cast<long long>(total), "clip", "clips") +
               " none sounds plainly like its recording, so that the clocks stay as they are.";
    return "The sound of " + counted(static_cast<long long>(heard), "clip", "clips") + " was compared; " +
           (isInDoubt ? "what is in doubt stands above the list." : "nothing is in doubt.");
}

} // namespace orvane
