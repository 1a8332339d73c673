#pragma once

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// The lines of the review table, one for each clip, in the order of the list.
std::vector<ReviewLine> reviewLines(const WorkSnapshot& work, const std::stop_token& stop = {});
/// Fills in what the doubts suggest, mostly by what the cameras' microphones heard, for clips without a
/// decision. Returns the number of these clips.
std::size_t fillInWhatWasHeard(std::vector<ReviewLine>& lines, const WorkSnapshot& work);

/// The changes that a line asks for.
struct ReviewDecision {
    UUID groupID;
    std::optional<UUID> matchID{}; ///< the recording to choose
    bool isAlone = false;          ///< the clip's other recordings are to be removed
    /// Files of the scan to attach: that of the recording to choose, then the others of its take.
    std::vector<Shared<MediaAsset>> others{};
    std::optional<double> offsetSeconds{};
    std::optional<std::string> name{};
    std::optional<bool> isSkipped{}, isLocked{};
    /// Recordings of another day than the clip's, to remove because the line both chooses another one and
    /// locks the clip.
    std::vector<UUID> otherDays{};

    bool isEmpty() const {
        return !matchID && others.empty() && !offsetSeconds && !name && !isSkipped && !isLocked;
    }
};
struct ReviewReading {
    std::vector<ReviewDecision> decisions;
    /// For people, a line each: lines and cells that were not used, and why.
    std::vector<std::string> problems;
};
/// The decisions in the lines that the clips do not have yet; a clip without a line is not changed. A clip is
/// found by its camera file, as tables and messages name it, or by the end of its path. Any thread.
ReviewReading readDecisions(const WorkSnapshot& work, const std::vector<ReviewLine>& lines,
                            const std::stop_token& stop = {});
/// The suggestions for those of these clips that have one. Any thread; throws Stopped.
std::vector<ReviewDecision> suggestedDecisions(const WorkSnapshot& work, const std::vector<UUID>& groupIDs,
                                               const std::stop_token& stop = {});
/// Applies them as one undo step. Interface thread.
void carryOut(ImportController& controller, const UndoStep& step,
              const std::vector<ReviewDecision>& decisions);

/// Writes a table. An existing table is replaced without permission only if no decision and no note in it is
/// lost. Throws OutputRefused, FileError, and ReviewTableError for a table that cannot be parsed. Any thread
/// except the interface thread.
void writeReviewFile(const std::string& path, const std::vector<ReviewLine>& lines, RunInputs inputs,
                     const OutputPermission& permission);

/// Reads a table from the disk. Throws FileError and ReviewTableError, which name the file, and Stopped. Any
/// thread except the interface thread.
std::vector<ReviewLine> readReviewFile(const std::string& path, const std::stop_token& stop = {});

} // namespace orvane
