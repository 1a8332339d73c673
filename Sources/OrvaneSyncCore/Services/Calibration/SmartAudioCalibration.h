#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Services/Calibration/CalibrationMatrix.h"

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Measures by how much Final Cut Pro's effects move a clip's level. Any thread that may wait; one operation
/// at a time. What reads sound throws Stopped, and ReadFailed of a file that is read in part only.
namespace SmartAudioCalibration {

/// What building the source leaves.
struct SourceInfo {
    FileURL url;      ///< the source
    FileURL videoURL; ///< the black picture
    double durationSeconds = 0;
    double sampleRate = 0; ///< Hz
    double peakDBFS = 0;
    double rmsDBFS = 0;
    double integratedLUFS = 0; ///< -70 without a value

    bool operator==(const SourceInfo&) const = default;
};
JSON toJSON(const SourceInfo& info);

/// The files of the user account.
FileURL sourceFile();
FileURL documentFile();
/// The source's name with the picture's ending.
FileURL pictureFileOf(const FileURL& source);

/// Writes the source: the loudest minute of the recording, or noise where there is none or it is too short,
/// and the picture where it is missing. Throws FileError.
SourceInfo generateSource(const FileURL& at, const std::optional<FileURL>& from, std::uint64_t seed,
                          const std::stop_token& stop = {});
/// Measures a source again; nothing where it cannot be read.
std::optional<SourceInfo> sourceInfoOf(const FileURL& source, const std::stop_token& stop = {});

/// One synchronized clip a combination, in order, all in one event. Throws FCPXMLError.
std::string buildFCPXML(const FileURL& sourceURL, const FileURL& videoURL, double sourceDurationSeconds,
                        double sourceSampleRate, const std::vector<CalibrationPerm>& perms,
                        const std::string& eventName);

struct Levels {
    double peakDBFS = 0;
    double rmsDBFS = 0;
};
/// Over all channels; nothing without a sample.
std::optional<Levels> measureLevels(const FileURL& file, const std::stop_token& stop = {});

/// What the source is, for the differences.
struct SourceLevels {
    double peakDBFS = 0;
    double rmsDBFS = 0;
    double lufs = 0;
};
/// All bounced files of a folder whose names say their combination, in the order of their names. A folder or
/// file that cannot be read has none. `now`: the time of the measurement.
CalibrationResult measure(const FileURL& folder, const SourceLevels& source, Date now,
                          const std::stop_token& stop = {});
/// The bounced files of the folder, by their names, that the result does not have: they could not be read.
std::vector<std::string> unreadFiles(const FileURL& folder, const CalibrationResult& result);
/// One bounced file in which the clips follow each other.
CalibrationResult measureSingle(const FileURL& file, double clipDurationSeconds,
                                const std::vector<CalibrationPerm>& perms, const SourceLevels& source,
                                Date now, const std::stop_token& stop = {});

/// Makes it the calibration that forecasts go by. Throws FileError.
void save(const CalibrationResult& result);
/// Nothing where it is missing or does not decode.
std::optional<CalibrationResult> loadSaved();

} // namespace SmartAudioCalibration
} // namespace orvane
