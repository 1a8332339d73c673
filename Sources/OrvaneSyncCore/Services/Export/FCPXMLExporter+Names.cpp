#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Naming/ClipNames.h"

namespace orvane::FCPXMLExporter {

NamesByGroup exportClipNames(const SyncGroupList& groups, const ExportSettings& settings) {
    std::vector<std::string> texts =
        ClipNames::of(groups, settings.get(settings::clipNamingSource), settings.customNamingPattern,
                      settings.get(settings::namingSeparator));
    NamesByGroup names;
    names.reserve(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) names.emplace(groups[i].id, std::move(texts[i]));
    return names;
}

} // namespace orvane::FCPXMLExporter
