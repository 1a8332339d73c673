#pragma once

#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <vector>

namespace orvane {

/// A file that may be a part of one recording.
struct RecordingPart {
    const Recording* file;
    double shiftSeconds = 0; ///< whole days that move it to the other parts

    SyncEngine::TCRange range() const {
        const auto& range = file->place.range;
        return {range.startSeconds + shiftSeconds, range.endSeconds + shiftSeconds};
    }
};
using RecordingParts = std::vector<RecordingPart>;

/// The rate (frames per second) at which the labels of all parts are read, whichever parts state one: the
/// rate of the first file with a count of samples, else of the earliest label.
double sharedRate(const RecordingParts& parts);

/// Whether the files are parts of one recording, as opposed to recordings that compete.
bool isOneRecording(const RecordingParts& parts);

} // namespace orvane
