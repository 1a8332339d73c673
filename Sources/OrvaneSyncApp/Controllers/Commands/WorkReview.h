#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"

#include <string>
#include <vector>

namespace orvane {

/// The clips for review in a spreadsheet, in the order of the list. Interface thread.
std::vector<ReviewLine> reviewLines(const ImportController& controller);

/// What came of a table that was taken back.
struct ReviewOutcome {
    int changedClips = 0;
    /// For people, a line each: lines and cells of which nothing was used, and why.
    std::vector<std::string> problems;
};
/// Does what the lines say and the clips do not have yet, as one undo step; a clip without a line stays as it
/// is. A clip is found by its camera file, as tables and messages name it, or by the end of its path.
/// Interface thread.
ReviewOutcome applyReview(ImportController& controller, const std::vector<ReviewLine>& lines);

/// Writes a table. One that is there is replaced without permission as long as no decision and no note of it
/// gets lost. Throws OutputRefused, FileError, and ReviewTableError for a table that cannot be understood.
/// Any thread but that of the interface.
void writeReviewFile(const std::string& path, const std::vector<ReviewLine>& lines, RunInputs inputs,
                     const OutputPermission& permission);

/// A table from the disk. Throws FileError and ReviewTableError, which name the file. Any thread but that of
/// the interface.
std::vector<ReviewLine> readReviewFile(const std::string& path);

} // namespace orvane
