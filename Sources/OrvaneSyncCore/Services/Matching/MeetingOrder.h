#pragma once

#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"

#include <vector>

namespace orvane {

/// Sorts the recordings that one clip meets (at least one) into the order in which the clip lists them, and
/// returns whether this settles the clip.
///
/// The recording that covers most of the clip is first. The parts of one recording count together and stay
/// together, the part with the longest overlap first. If only its header dates a clip, recordings of other
/// days follow the others, as long as the others overlap it at least half as long. They are removed if sound
/// of the header's day covers the clip within a second and is nearer to it. Among recordings that cover
/// equally much, the nearest to the video by its folders is first; other equal ones keep their order. The
/// clip is ambiguous if, beside the take of the first recording, it meets one that overlaps it less than half
/// as long, is no copy and is not of another day than the header's.
///
/// `clip`, of the video, is on the axis of the recordings' ranges. Each meeting's offset says by how many
/// days its recording is moved. Pure; any thread.
MatchStatus rankMeetings(const MediaAsset& video, const SyncEngine::TCRange& clip,
                         std::vector<Meeting>& meetings, const std::vector<Recording>& recordings);

/// How much of the clip at least one of the ranges covers, in seconds.
double coveredSeconds(const SyncEngine::TCRange& clip, std::vector<SyncEngine::TCRange> ranges);

} // namespace orvane
