#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Which combinations of effect settings a calibration measures.
enum class CalibrationMatrix {
    sweetSpot, ///< 49: Voice Isolation at 50, the other two in fine steps
    coarse     ///< 27: minimum, middle and maximum of all three
};
std::vector<CalibrationPerm> permsOf(CalibrationMatrix matrix);

/// Such as "VI50_L25_U10".
std::string filenameTag(const CalibrationPerm& perm);
/// The name of its clip: "Calib_" and the tag.
std::string calibrationClipName(const CalibrationPerm& perm);
/// The combination in the name of a bounced file, without the extension. Other parts between "_" are ignored.
/// Absent if one of the three values is missing.
std::optional<CalibrationPerm> parseCalibrationPerm(std::string_view stem);

} // namespace orvane
