#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// The clips for review in a spreadsheet, in the order of the list.
std::vector<ReviewLine> reviewLines(const WorkSnapshot& work, const std::stop_token& stop = {});
/// Fills in what the cameras' microphones heard, of clips about which nothing was decided. Returns of how
/// many.
std::size_t fillInWhatWasHeard(std::vector<ReviewLine>& lines, const WorkSnapshot& work);

/// What a line asks for beyond what the clip has.
struct ReviewDecision {
    UUID groupID;
    std::optional<UUID> matchID{};             ///< of the recording to be chosen
    std::optional<Shared<MediaAsset>> other{}; ///< a recording of the scan, to be attached and chosen
    std::optional<double> offsetSeconds{};
    std::optional<std::string> name{};
    std::optional<bool> isSkipped{}, isLocked{};
    /// Of another day than the clip, beside what its line both chooses and locks: to be taken off.
    std::vector<UUID> otherDays{};

    bool isEmpty() const { return !matchID && !other && !offsetSeconds && !name && !isSkipped && !isLocked; }
};
struct ReviewReading {
    std::vector<ReviewDecision> decisions;
    /// For people, a line each: lines and cells of which nothing was used, and why.
    std::vector<std::string> problems;
};
/// What the lines say and the clips do not have yet; a clip without a line stays as it is. A clip is found by
/// its camera file, as tables and messages name it, or by the end of its path. Any thread.
ReviewReading readDecisions(const WorkSnapshot& work, const std::vector<ReviewLine>& lines,
                            const std::stop_token& stop = {});
/// Does them as one undo step. Interface thread.
void carryOut(ImportController& controller, const std::vector<ReviewDecision>& decisions);

/// Writes a table. One that is there is replaced without permission as long as no decision and no note of it
/// gets lost. Throws OutputRefused, FileError, and ReviewTableError for a table that cannot be understood.
/// Any thread but that of the interface.
void writeReviewFile(const std::string& path, const std::vector<ReviewLine>& lines, RunInputs inputs,
                     const OutputPermission& permission);

/// A table from the disk. Throws FileError and ReviewTableError, which name the file. Any thread but that of
/// the interface.
std::vector<ReviewLine> readReviewFile(const std::string& path);

} // namespace orvane
