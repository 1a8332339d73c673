#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

namespace orvane::FCPXMLExporter {

/// Holds the search for cameras that rolled at the same moment and the multicam clips made of them. No
/// clusters are formed yet.
void addMulticamClips(ExportWalk&) {}

std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList&) { return {}; }

} // namespace orvane::FCPXMLExporter
