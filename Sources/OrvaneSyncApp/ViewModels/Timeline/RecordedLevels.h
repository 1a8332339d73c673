#pragma once

#include "OrvaneSyncApp/Controllers/SmartAudioState.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"
#include "Platform/Playback/Player.h"

#include <vector>

namespace orvane {

/// The levels of the channels of a clip's recording at a clip time, from its waveform: for meters while a mix
/// of the channels is played instead of the recording. 0 for a channel that the player does not play, and
/// where the waveform is not known. Empty if the clip has no sound. Pure; any thread.
std::vector<platform::ChannelPeak> recordedLevels(const SyncGroup& clip, const SmartAudioState& smartAudio,
                                                  const WaveformResult& waveform, double clipSeconds);

} // namespace orvane
