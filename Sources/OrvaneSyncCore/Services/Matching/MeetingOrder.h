#pragma once

#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"

#include <vector>

namespace orvane {

/// Puts what one clip meets (at least one recording) into the order in which the clip lists it, and says
/// whether that settles the clip.
///
/// What covers most of the clip comes first. The parts of one recording count by what they cover together and
/// stay together, the one with the most in common first. Of a clip that its header alone dates, recordings of
/// other days come behind those that are not, as long as these have at least half as much in common with it,
/// and are left out where sound of the header's day has all of it but for a second and lies nearer.
/// Of those that cover equally much, what lies nearest to the video by its folders comes first; other equal
/// ones stay in their order. The clip is ambiguous where a recording beside the take of the first one has
/// less than half of what that has, and is no copy and of no other day than the header's.
///
/// `clip`, of the video, lies on the axis of the recordings' ranges, and each meeting's offset says by how
/// many days its recording is moved. Pure; any thread.
MatchStatus rankMeetings(const MediaAsset& video, const SyncEngine::TCRange& clip,
                         std::vector<Meeting>& meetings, const std::vector<Recording>& recordings);

/// How much of the clip lies under at least one of the ranges, in seconds.
double coveredSeconds(const SyncEngine::TCRange& clip, std::vector<SyncEngine::TCRange> ranges);

} // namespace orvane
