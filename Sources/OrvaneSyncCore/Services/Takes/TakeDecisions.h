#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

namespace orvane {

/// Carries what was decided about channels over to the recordings that the clip has by now: the tracks that
/// are switched on or excluded and those of the ranges of blocks, which are stated by running numbers. These
/// move when a file joins or leaves the take; a range keeps its place, which is that in the clip. What was
/// decided about a channel that is gone is dropped; a copy stands in for its original. `before`: the clip
/// with its former recordings. Where either has none, nothing changes. Pure; any thread.
void carryDecisions(SyncGroup& group, const SyncGroup& before);

/// What was said of the recording that the editor has replaced by another one says nothing of that one: it is
/// heard with all its channels where the choice of channels, made for the former one, would leave it silent,
/// and neither the loudness nor the gain that follows from it are known. To be called behind
/// `carryDecisions`; where the recording is the same, nothing changes. Pure; any thread.
void startWithRecording(SyncGroup& group, const SyncGroup& before);

/// Keeps the sync anchor, which is stated from the start of the first recording, at its place under the
/// picture when another recording is the first one by now. It is dropped where that place is outside of what
/// is heard, or nothing is heard. Pure; any thread.
void carryAnchor(SyncGroup& group, const SyncGroup& before);

/// Brings seconds from the start of the first recording to those of the whole take: they may lie in a file
/// before or behind the first recording. Of a take that does not say how long it is, only its start counts.
double withinTake(const Take& take, double secondsInPrimary);

} // namespace orvane
