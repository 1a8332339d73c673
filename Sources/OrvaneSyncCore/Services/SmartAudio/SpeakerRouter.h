#pragma once

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

// Routing of a take in which each speaker has a microphone of their own and no microphone hears them all:
// what is heard is the lav of whoever speaks. Each lav is measured against what the others hear of the same
// voice, so that neither a loud recording level nor bleed decides.

/// The classifications, with the booms and mixes that were guessed but are one person's microphone as lavs:
/// what hears several people is never ahead of the lav of whoever speaks.
std::vector<ChannelClassification> withoutRefutedGuesses(std::vector<ChannelClassification> classifications,
                                                         const TakeStatistics& channelStats,
                                                         std::span<const PerWindowFrame> frames);

/// The tracks of the take that can be one person's microphone, in the order of the classifications: lavs and
/// tracks of unknown role, and booms where that was guessed of all; without mixes of several.
std::vector<int> personalTracks(const TakeStatistics& channelStats,
                                const std::vector<ChannelClassification>& classifications);

/// Whether a take is routed by who speaks. `automatic`: where 2 to 32 people have microphones and no boom or
/// mix qualifies as default. `speaker`: also where one does.
bool isRoutedBySpeaker(SmartAudioRouting routing, const TakeStatistics& channelStats,
                       const std::vector<ChannelClassification>& classifications);

/// The whole take in blocks of at least `minBlockSeconds` (a shorter take is one block), each with the lav of
/// its speaker. A long pause is a `silence` block on the track before it. Cuts lie in pauses where there are
/// any. Everybody who speaks has a block, as far as there is room for that many. No blocks where no track
/// ever rises above its own noise.
std::vector<BlockDecision> buildBlocksBySpeaker(const std::vector<int>& tracks,
                                                std::span<const PerWindowFrame> frames, double windowSeconds,
                                                double minBlockSeconds);

} // namespace orvane::SmartAudioBlockRouter
