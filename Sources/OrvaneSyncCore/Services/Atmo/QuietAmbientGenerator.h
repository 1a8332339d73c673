#pragma once

#include "OrvaneSyncCore/Services/Atmo/AtmoCandidate.h"
#include "Platform/NewFile.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// Why no room tone could be made; the description is for the user.
class QuietAtmoError : public std::runtime_error {
  public:
    enum class Kind { noQuietSegmentsFound, bufferAllocationFailed };
    explicit QuietAtmoError(Kind kind);
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Finds quiet, steady sections of single channels of recordings and joins some of them into one file of room
/// tone with equal-power crossfades. Has no state; any thread that may wait. All but
/// `sanitizeFilenameComponent` throw Stopped.
struct QuietAmbientGenerator {
    double windowSeconds = 0.1;                 ///< length of one measurement
    double minSegmentSeconds = 2.5;             ///< of an accepted section
    float absoluteSilenceDB = -60.0F;           ///< dBFS; louder windows are never quiet
    double crossfadeSeconds = 0.25;             ///< between joined sections
    int maxSegments = 40;                       ///< in one file
    float maxRMSCoefficientOfVariation = 0.25F; ///< standard deviation over mean of a section's windows
    float maxAdjacentDeltaFraction = 0.5F;      ///< largest step between windows, relative to that mean

    /// All candidates of all files, in the order of the files. A file that cannot be read has none.
    /// `progress` gets the share of the files that was analysed.
    std::vector<AtmoCandidate> scanCandidates(const std::vector<FileURL>& audioURLs,
                                              const std::function<void(double share)>& progress = nullptr,
                                              const std::stop_token& stop = {}) const;

    struct Output {
        std::string sceneName;
        std::string directory; ///< created if it is missing
        std::string audioRole;
        /// Called before the file is put in its place, as in NewFile; null replaces an existing file of that
        /// name.
        std::function<platform::files::Existing(const std::string& path)> decide = nullptr;
    };
    /// Selects candidates until the target is reached and writes them to `pathOf(output)`: one channel at the
    /// sample rate of the first. Throws QuietAtmoError, and FileError for a file that cannot be read or
    /// written; then no file is left.
    AtmoResult stitchCandidates(const std::vector<AtmoCandidate>& candidates, double targetDurationSeconds,
                                const Output& output, const std::stop_token& stop = {}) const;
    /// `scanCandidates` and `stitchCandidates` in one call.
    AtmoResult generate(const std::vector<FileURL>& audioURLs, double targetDurationSeconds,
                        const Output& output, const std::stop_token& stop = {}) const;

    /// The candidates that are joined: the longest first, and the quieter first of equally long ones.
    std::vector<AtmoCandidate> picked(std::vector<AtmoCandidate> candidates,
                                      double targetDurationSeconds) const;

    static std::string sanitizeFilenameComponent(std::string_view name);
    /// The beginning of the names of a scene's files, including files made earlier.
    static std::string fileNameStem(std::string_view sceneName);
    static std::string pathOf(const Output& output);
};

} // namespace orvane
