#pragma once

#include <string>

namespace orvane::SmartAudioDiagnosticsLocation {

/// Where the analysis leaves its text reports: absolute, in the bytes of the file system. Made, with the
/// folders above it, where it is missing; a failure to do so shows when a report is written.
std::string directory();

} // namespace orvane::SmartAudioDiagnosticsLocation
