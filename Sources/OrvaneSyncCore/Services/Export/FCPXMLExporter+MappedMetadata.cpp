#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

namespace orvane::FCPXMLExporter {

/// Holds the way of a clip's imported fields into metadata, keywords and notes, by the user's mapping. Maps
/// nothing yet.
MappedItems lockitMappedItems(const SyncGroup&, const ExportSettings&) { return {}; }

} // namespace orvane::FCPXMLExporter
