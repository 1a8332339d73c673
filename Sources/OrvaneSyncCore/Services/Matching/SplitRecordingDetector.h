#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Distinguishes a recording that the recorder cut into several files from files side by side. Pure; any
/// thread.
namespace SplitRecordingDetector {

struct Candidate {
    SyncEngine::TCRange range;
    std::optional<std::string> bextOriginator;
    std::optional<std::string> tape; ///< sound roll of the iXML
};

/// Two parts still join if the gap or overlap between them is at most this.
constexpr double contiguityToleranceSeconds = 0.5;
/// Files further apart are two takes, whatever their names. In a smaller gap, the card lost a part.
constexpr double largestGapSeconds = 60;

/// Whether a file begins at the end of the one before it.
bool follows(const SyncEngine::TCRange& previous, const SyncEngine::TCRange& current);

/// Whether two values of a recorder or of a sound roll show that files differ: only if both are known and
/// differ in more than case and surrounding blanks.
bool areKnownToDiffer(const std::optional<std::string>& a, const std::optional<std::string>& b);

/// Whether a later file may be the next part of a recording, however long the gap between the two. Nothing
/// known may show different recorders, rolls, formats, scenes or takes, and one of the numbers in the names
/// must count on, as in T_1 and T_2 or T01 and T01_2. A number that typically counts takes, as in T05 and T06
/// or A_001 and A_002, is only accepted if both files state one scene and one take.
bool mayContinue(const MediaAsset& previous, const MediaAsset& current);

/// The same for a file that begins within `largestGapSeconds` of the other's end. A file that begins at that
/// end needs none of these conditions; the caller that joins the two compares their recorders.
bool mayAdjoin(const MediaAsset& previous, double endSeconds, const MediaAsset& current, double startSeconds);

/// Whether each file begins at the end of the one before, and nothing known shows different recorders or
/// sound rolls. The files may be in any order; fewer than two are no chain.
bool isContinuousChain(std::vector<Candidate> candidates);

} // namespace SplitRecordingDetector
} // namespace orvane
