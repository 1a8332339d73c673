#pragma once

#include "Platform/AudioFile.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orvane {

/// Listens to the first two seconds of a channel that carries linear timecode (SMPTE 12M, biphase mark) and
/// reads one frame. Neither the frame rate nor the sample rate is needed. Stateless; any thread.
namespace LTCDecoder {

struct Frame {
    std::string tc;       ///< HH:MM:SS:FF
    double atSeconds = 0; ///< where the block of samples that completed the frame begins in the file
};

/// Channels count from 0; one beyond the last means the last, a negative one the first. An open file must
/// stand at its start, and stands somewhere behind it afterwards.
std::optional<Frame> decodeFirstFrame(const std::string& path, int channelIndex);
std::optional<Frame> decodeFirstFrame(platform::AudioFile& file, int channelIndex);

/// The bits of the signal as a text of the digits 0 and 1. Nothing for less than one frame of signal.
std::optional<std::string> collectBits(std::span<const float> samples);
/// The time of the 80 bits that end with the first sync word.
std::optional<std::string> parseSMPTEFrame(std::string_view bits);

} // namespace LTCDecoder
} // namespace orvane
