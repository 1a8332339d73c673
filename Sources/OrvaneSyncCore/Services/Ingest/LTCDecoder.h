#pragma once

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/LTCReading.h"
#include "Platform/AudioFile.h"

#include <optional>
#include <stop_token>
#include <string>

namespace orvane {

/// Listens to the first two seconds of a sound for linear timecode (SMPTE 12M, biphase mark), which a
/// recorder or a camera may carry on one of its channels. Stateless; any thread.
namespace LTCDecoder {

/// Every channel is listened to, and the lowest that carries timecode is taken.
inline constexpr int anyChannel = settings::everyTimecodeChannel;
/// As many channels as a search hears.
inline constexpr int mostChannels = 128;

struct Frame {
    std::string tc;                ///< HH:MM:SS:FF, the label of the first whole frame
    double atSeconds = 0;          ///< where the block of samples that completed the frame begins in the file
    double beginsAtSeconds = 0;    ///< where the frame itself begins in the file
    int channelIndex = 0;          ///< from 0
    std::optional<LTCStart> start; ///< of the file; absent where the rate of the timecode stays unknown
};

/// Channels count from 0, over all sound tracks of a movie in their order; one beyond the last means the
/// last, and a negative one other than `anyChannel` the first. `stated` is the rate that the file names, for
/// where the signal leaves two open. An open file must stand at its start, and stands somewhere behind it
/// afterwards.
std::optional<Frame> decodeFirstFrame(const std::string& path, int channelIndex,
                                      std::optional<TimecodeFrameRate> stated = std::nullopt,
                                      const std::stop_token& stop = {});
std::optional<Frame> decodeFirstFrame(platform::AudioFile& file, int channelIndex,
                                      std::optional<TimecodeFrameRate> stated = std::nullopt,
                                      const std::stop_token& stop = {});

} // namespace LTCDecoder
} // namespace orvane
