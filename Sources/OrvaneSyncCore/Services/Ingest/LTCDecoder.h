#pragma once

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/LTCReading.h"
#include "Platform/AudioFile.h"

#include <optional>
#include <stop_token>
#include <string>

namespace orvane {

/// Searches the first two seconds of a sound for linear timecode (SMPTE 12M, biphase mark), which a recorder
/// or camera may have on one of its channels. Stateless; any thread.
namespace LTCDecoder {

/// Searches every channel and takes the lowest one with timecode.
inline constexpr int anyChannel = settings::everyTimecodeChannel;
/// The most channels that are searched.
inline constexpr int mostChannels = 128;

struct Frame {
    std::string tc;                ///< HH:MM:SS:FF, the timecode of the first complete frame
    double atSeconds = 0;          ///< position in the file of the block of samples that completes the frame
    double beginsAtSeconds = 0;    ///< position in the file at which the frame begins
    int channelIndex = 0;          ///< from 0
    std::optional<LTCStart> start; ///< the start of the file; absent if the rate of the timecode is unknown
};

/// Channels count from 0, over all sound tracks of a movie in order. A number beyond the last channel means
/// the last, a negative number other than `anyChannel` the first. `stated` is the rate in the file's
/// metadata, used if two rates fit the signal. An open file must be at its start; its position afterwards is
/// undefined.
std::optional<Frame> decodeFirstFrame(const std::string& path, int channelIndex,
                                      std::optional<TimecodeFrameRate> stated = std::nullopt,
                                      const std::stop_token& stop = {});
std::optional<Frame> decodeFirstFrame(platform::AudioFile& file, int channelIndex,
                                      std::optional<TimecodeFrameRate> stated = std::nullopt,
                                      const std::stop_token& stop = {});

} // namespace LTCDecoder
} // namespace orvane
