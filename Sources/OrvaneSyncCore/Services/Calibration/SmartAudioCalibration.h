#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Services/Calibration/CalibrationMatrix.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Measures by how much Final Cut Pro's effects change a clip's level. Any thread that may wait; one
/// operation at a time. Operations that read sound throw Stopped, and ReadFailed if a file could only be read
/// in part.
namespace SmartAudioCalibration {

/// The files and levels of a source that was built.
struct SourceInfo {
    FileURL url;      ///< the source
    FileURL videoURL; ///< the black picture
    double durationSeconds = 0;
    double sampleRate = 0; ///< Hz
    double peakDBFS = 0;
    double rmsDBFS = 0;
    double integratedLUFS = 0; ///< -70 if it cannot be measured

    bool operator==(const SourceInfo&) const = default;
};
JSON toJSON(const SourceInfo& info);

/// The files of the user's installation.
FileURL sourceFile();
FileURL documentFile();
/// The same name with the extension of the picture.
FileURL pictureFileOf(const FileURL& source);

/// Writes the source: the loudest minute of the recording, or noise if there is no recording or it is too
/// short. Writes the black picture if it is missing. Throws FileError.
SourceInfo generateSource(const FileURL& at, const std::optional<FileURL>& from, std::uint64_t seed,
                          const std::stop_token& stop = {});
/// Measures an existing source again; absent if it cannot be read.
std::optional<SourceInfo> sourceInfoOf(const FileURL& source, const std::stop_token& stop = {});

/// One synchronized clip for each combination, in order, all in one event. Throws FCPXMLError.
std::string buildFCPXML(const FileURL& sourceURL, const FileURL& videoURL, double sourceDurationSeconds,
                        double sourceSampleRate, const std::vector<CalibrationPerm>& perms,
                        const std::string& eventName);

struct Levels {
    double peakDBFS = 0;
    double rmsDBFS = 0;
};
/// Over all channels; absent if the file has no samples.
std::optional<Levels> measureLevels(const FileURL& file, const std::stop_token& stop = {});

/// The levels of the source, from which the differences are computed.
struct SourceLevels {
    double peakDBFS = 0;
    double rmsDBFS = 0;
    double lufs = 0;
};
/// Measures all bounced files of a folder whose names contain their combination, in the order of the names.
/// Files and folders that cannot be read are skipped. `now`: the time of the measurement.
CalibrationResult measure(const FileURL& folder, const SourceLevels& source, Date now,
                          const std::stop_token& stop = {});
/// The names of the folder's bounced files that are missing in the result because they could not be read.
std::vector<std::string> unreadFiles(const FileURL& folder, const CalibrationResult& result);
/// Measures one bounced file that contains the clips one after the other.
CalibrationResult measureSingle(const FileURL& file, double clipDurationSeconds,
                                const std::vector<CalibrationPerm>& perms, const SourceLevels& source,
                                Date now, const std::stop_token& stop = {});

/// Makes the result the calibration for forecasts. Throws FileError.
void save(const CalibrationResult& result);
/// Absent if the file is missing or cannot be decoded.
std::optional<CalibrationResult> loadSaved();

} // namespace SmartAudioCalibration
} // namespace orvane
