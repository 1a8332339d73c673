#pragma once

#include <string>

namespace orvane::SmartAudioDiagnosticsLocation {

/// The folder for the text reports of the analysis: absolute, in the bytes of the file system. Created, with
/// the folders above it, if it is missing; a failure to create it shows when a report is written.
std::string directory();

} // namespace orvane::SmartAudioDiagnosticsLocation
