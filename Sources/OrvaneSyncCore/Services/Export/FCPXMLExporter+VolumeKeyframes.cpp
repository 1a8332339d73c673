#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

namespace orvane::FCPXMLExporter {

/// Holds the volume curves that the routed blocks draw on each channel. Draws none yet.
void injectVolumeKeyframes(fcpxml::XMLDocument&, const SyncGroupList&, const ExportSettings&) {}

} // namespace orvane::FCPXMLExporter
