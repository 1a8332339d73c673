#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

namespace orvane::FCPXMLExporter {

/// Holds the bin with every source file as it is. Adds none yet.
void addRawMedia(ExportWalk&) {}

} // namespace orvane::FCPXMLExporter
