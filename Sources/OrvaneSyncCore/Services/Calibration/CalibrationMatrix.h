#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/CalibrationResult.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Which combinations of effect settings a calibration measures.
enum class CalibrationMatrix {
    sweetSpot, ///< 49: Voice Isolation at 50, fine steps of the other two
    coarse     ///< 27: the ends and the middle of all three
};
std::vector<CalibrationPerm> permsOf(CalibrationMatrix matrix);

/// Such as "VI50_L25_U10".
std::string filenameTag(const CalibrationPerm& perm);
/// Name of its clip: "Calib_" and the tag.
std::string calibrationClipName(const CalibrationPerm& perm);
/// The combination in the name of a bounced file, without its extension; other pieces between "_" do not
/// count. Nothing where one of the three is missing.
std::optional<CalibrationPerm> parseCalibrationPerm(std::string_view stem);

} // namespace orvane
