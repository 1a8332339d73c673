#pragma once

#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <vector>

namespace orvane {

/// A file of what may be one recording in parts.
struct RecordingPart {
    const Recording* file;
    double shiftSeconds = 0; ///< whole days that bring it to the others

    SyncEngine::TCRange range() const {
        const auto& range = file->place.range;
        return {range.startSeconds + shiftSeconds, range.endSeconds + shiftSeconds};
    }
};
using RecordingParts = std::vector<RecordingPart>;

/// The rate (frames per second) at which the labels of all parts are read, whichever of them happen to state
/// one: that of the first file with a count of samples, else that of the earliest label.
double sharedRate(const RecordingParts& parts);

/// Whether the recorder cut one recording into these files, as opposed to recordings that compete.
bool isOneRecording(const RecordingParts& parts);

} // namespace orvane
