#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Naming/SyncClustering.h"

#include <algorithm>
#include <limits>

namespace orvane::FCPXMLExporter {

NamesByGroup exportClipNames(const SyncGroupList& groups, const ExportSettings& settings) {
    const SyncClustering::Index clusters(groups, settings.clipNamingSource, settings.customNamingPattern);
    NamesByGroup names;
    names.reserve(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto siblings =
            std::min<std::size_t>(clusters.siblingCount(i), std::numeric_limits<int>::max());
        names.emplace(groups[i].id, GroupNaming::fcpClipName(
                                        groups[i], settings.clipNamingSource, settings.customNamingPattern,
                                        static_cast<int>(siblings), settings.namingSeparator, false));
    }
    return names;
}

} // namespace orvane::FCPXMLExporter
