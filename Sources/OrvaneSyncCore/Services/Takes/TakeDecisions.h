#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

namespace orvane {

/// Applies decisions about channels to the recordings that the clip has after a change: the tracks that are
/// switched on or excluded and those of the ranges of blocks, which are stored as running numbers. These
/// numbers change when a file joins or leaves the take; a range keeps its place in the clip. Decisions about
/// a channel that no longer exists are dropped; a copy replaces its original. `before`: the clip with its
/// former recordings. If either clip has none, nothing changes. Pure; any thread.
void carryDecisions(SyncGroup& group, const SyncGroup& before);

/// Whether decisions about channels count takes that follow each other under one clip separately, as earlier
/// versions did: a number is higher than the clip has channels now. Pure; any thread.
bool countsTakesSeparately(const SyncGroup& group);
/// Changes the numbers of such decisions to those that the channels have now. Pure; any thread.
void countTakesTogether(SyncGroup& group);

/// Removes values that do not apply to a recording with which the editor replaced another one. All its
/// channels are used if the choice of channels, made for the former recording, would leave it silent; the
/// measured loudness and the gain from it are reset. Must be called after `carryDecisions`; with the same
/// recording, nothing changes. Pure; any thread.
void startWithRecording(SyncGroup& group, const SyncGroup& before);

/// Keeps the sync anchor, which is stored relative to the start of the first recording, at its place under
/// the picture when another recording becomes the first. Removes it if that place is outside of the sound, or
/// if there is no sound. Pure; any thread.
void carryAnchor(SyncGroup& group, const SyncGroup& before);

/// Limits a time in seconds from the start of the first recording to the range of the whole take: it may be
/// in a file before or after the first recording. For a take of unknown length, only the start is a limit.
double withinTake(const Take& take, double secondsInPrimary);

} // namespace orvane
