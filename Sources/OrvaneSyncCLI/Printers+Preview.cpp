#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "Platform/Text.h"

namespace orvane::cli {

std::string exportPreviewText(const SyncGroupList& groups, const ExportSettings& settings, bool nameIsChosen,
                              bool wantsSmartAudio) {
    std::string text;
    if (settings.get(settings::splitEventsByScene))
        text += "By their scenes the clips call for " +
                counted(ExportPreview::projectedEventCount(groups, settings), "event", "events") + ".\n";
    else if (const auto name = ExportPreview::suggestedEventName(groups); name && !nameIsChosen)
        text += "The event is called '" + platform::text::printable(settings.get(settings::eventName)) +
                "'; after its scenes it would be --event '" + platform::text::printable(*name) + "'.\n";
    const auto coverage = ExportPreview::smartAudioCoverage(groups, settings.smartAudioResults).text();
    if (coverage && wantsSmartAudio) text += *coverage + "\n";
    return text;
}

} // namespace orvane::cli
