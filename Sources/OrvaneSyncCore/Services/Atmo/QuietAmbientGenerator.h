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

/// Why no room tone came of it; the description is for people.
class QuietAtmoError : public std::runtime_error {
  public:
    enum class Kind { noQuietSegmentsFound, bufferAllocationFailed };
    explicit QuietAtmoError(Kind kind);
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

/// Finds quiet, steady stretches on single channels of recordings, and joins some into one file of room tone
/// with crossfades of equal power. Holds no state; any thread that may wait. All but
/// `sanitizeFilenameComponent` throw Stopped.
struct QuietAmbientGenerator {
    double windowSeconds = 0.1;                 ///< that are measured at a time
    double minSegmentSeconds = 2.5;             ///< of an accepted stretch
    float absoluteSilenceDB = -60.0F;           ///< dBFS; louder windows are never quiet
    double crossfadeSeconds = 0.25;             ///< between joined stretches
    int maxSegments = 40;                       ///< in one file
    float maxRMSCoefficientOfVariation = 0.25F; ///< standard deviation over mean of a stretch's windows
    float maxAdjacentDeltaFraction = 0.5F;      ///< largest step between neighbouring windows over that mean

    /// All candidates of all files, in the order of the files. A file that cannot be read has none.
    /// `progress`: share of the files that was heard.
    std::vector<AtmoCandidate> scanCandidates(const std::vector<FileURL>& audioURLs,
                                              const std::function<void(double share)>& progress = nullptr,
                                              const std::stop_token& stop = {}) const;

    struct Output {
        std::string sceneName;
        std::string directory; ///< made where it is missing
        std::string audioRole;
        /// Asked before the file takes its place, as in NewFile; null replaces one of that name.
        std::function<platform::files::Existing(const std::string& path)> decide = nullptr;
    };
    /// Picks from the candidates until the target is reached and writes them as `pathOf(output)`, one channel
    /// at the rate of the first. Throws QuietAtmoError, and FileError for a file that cannot be read or
    /// written; then no file is left.
    AtmoResult stitchCandidates(const std::vector<AtmoCandidate>& candidates, double targetDurationSeconds,
                                const Output& output, const std::stop_token& stop = {}) const;
    /// Both in one.
    AtmoResult generate(const std::vector<FileURL>& audioURLs, double targetDurationSeconds,
                        const Output& output, const std::stop_token& stop = {}) const;

    /// Those that are joined, the longest first and of equally long ones the quieter.
    std::vector<AtmoCandidate> picked(std::vector<AtmoCandidate> candidates,
                                      double targetDurationSeconds) const;

    static std::string sanitizeFilenameComponent(std::string_view name);
    /// What the names of a scene's files begin with, older ones too.
    static std::string fileNameStem(std::string_view sceneName);
    static std::string pathOf(const Output& output);
};

} // namespace orvane
