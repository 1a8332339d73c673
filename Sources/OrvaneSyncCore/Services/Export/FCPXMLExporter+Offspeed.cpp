#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include <cmath>

namespace orvane::FCPXMLExporter {

/// Holds the retime of a clip whose file runs at the sensor's rate. No clip is retimed yet.
std::optional<fcpxml::TimeMap> buildTimeMap(const SyncGroup&, double) { return std::nullopt; }

std::string offspeedRateKeywordValue(const SyncGroup& group) {
    const double rate = group.video.sensorFrameRate.value_or(group.video.frameRate.value_or(0));
    const std::int64_t whole = truncated(rate);
    const bool isWhole = static_cast<double>(whole) == rate;
    return "Offspeed " + (isWhole ? std::to_string(whole) : threeDigits(rate)) + "fps";
}

/// Holds the clips at the sensor's rate, without sound, of offspeed material. Makes none yet.
void addNativeMOSClips(ExportWalk&) {}

/// Holds the clips at normal speed, with sound, of offspeed material. Makes none yet.
void addProjectRateClips(ExportWalk&) {}

} // namespace orvane::FCPXMLExporter
