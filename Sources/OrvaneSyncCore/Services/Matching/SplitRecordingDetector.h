#pragma once

#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Tells a recording that the recorder cut into several files from files that lie side by side. Pure; any
/// thread.
namespace SplitRecordingDetector {

struct Candidate {
    SyncEngine::TCRange range;
    std::optional<std::string> bextOriginator;
    std::optional<std::string> tape; ///< sound roll of the iXML
};

/// A gap or an overlap between two parts of up to this length is none.
constexpr double contiguityToleranceSeconds = 0.5;
/// What is further apart are two takes, whatever their names. Less is a part that the card lost.
constexpr double largestGapSeconds = 60;

/// Whether a file begins where the one before it ends.
bool follows(const SyncEngine::TCRange& previous, const SyncEngine::TCRange& current);

/// Whether two statements of a recorder or of a sound roll tell files apart: only two known values can, case
/// and blanks around them aside.
bool areKnownToDiffer(const std::optional<std::string>& a, const std::optional<std::string>& b);

/// Whether a later file may be the next part of a recording, however long the gap between the two: nothing
/// known tells their recorders, rolls, formats, scenes or takes apart, and the names count on in one of their
/// numbers, such as T_1 and T_2 or T01 and T01_2. Numbers that stand for takes, as in T05 and T06 or in
/// A_001 and A_002, do so only where both files state one scene and one take.
bool mayContinue(const MediaAsset& previous, const MediaAsset& current);

/// The same of one that begins within `largestGapSeconds` of the other's end; where it begins at that end it
/// needs nothing of this, as what tells their recorders apart is looked at by whoever joins them.
bool mayAdjoin(const MediaAsset& previous, double endSeconds, const MediaAsset& current, double startSeconds);

/// Whether each file begins where the one before ends, with nothing known that tells their recorders or their
/// sound rolls apart. In any order; fewer than two are no chain.
bool isContinuousChain(std::vector<Candidate> candidates);

} // namespace SplitRecordingDetector
} // namespace orvane
