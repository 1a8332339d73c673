#pragma once

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"
#include "OrvaneSyncCore/Services/SmartAudio/TakeStatistics.h"

#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

// Routing of a take in which each speaker has a microphone of their own and no microphone records all of
// them: the lavalier of the current speaker is played. Each lavalier is compared with the level of the same
// voice on the others, so that neither a high recording level nor bleed decides.

/// The classifications with corrected guesses: a guessed boom or mix that turns out to be one person's
/// microphone becomes a lavalier. A microphone that records several people is never ahead of the speaker's
/// own lavalier.
std::vector<ChannelClassification> withoutRefutedGuesses(std::vector<ChannelClassification> classifications,
                                                         const TakeStatistics& channelStats,
                                                         std::span<const PerWindowFrame> frames);

/// The tracks of the take that can be one person's microphone, in the order of the classifications: lavaliers
/// and tracks of unknown role, and also booms if all tracks were guessed to be booms; never mixes of several
/// people.
std::vector<int> personalTracks(const TakeStatistics& channelStats,
                                const std::vector<ChannelClassification>& classifications);

/// Whether a take is routed by speakers. `automatic`: if 2 to 32 people have microphones and no boom or mix
/// qualifies as default. `speaker`: even if one does.
bool isRoutedBySpeaker(SmartAudioRouting routing, const TakeStatistics& channelStats,
                       const std::vector<ChannelClassification>& classifications);

/// The whole take in blocks of at least `minBlockSeconds` (a shorter take is one block), each with the
/// lavalier of its speaker. A long pause is a `silence` block on the track before it. Cuts are in pauses if
/// there are any. Everyone who speaks gets a block as far as there is room. No blocks if no track ever rises
/// above its own noise.
std::vector<BlockDecision> buildBlocksBySpeaker(const std::vector<int>& tracks,
                                                std::span<const PerWindowFrame> frames, double windowSeconds,
                                                double minBlockSeconds);

} // namespace orvane::SmartAudioBlockRouter
