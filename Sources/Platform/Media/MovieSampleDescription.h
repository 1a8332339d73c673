#pragma once

#include "Platform/Media/MovieAtoms.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// The first sample description of a video track.
struct VideoDescription {
    std::uint32_t codec = 0;             ///< of the picture itself, also where it is encrypted
    std::uint16_t width = 0, height = 0; ///< pixels; 0 if the file does not say
};

/// The first sample description of a sound track. If the codec's own configuration differs from the
/// description's fixed fields, the configuration is used: 96 kHz does not fit into those fields.
struct AudioDescription {
    std::uint32_t channels = 0;
    double sampleRate = 0; ///< Hz; 0 if the file does not say
};

/// From an "stsd" atom; nothing when it holds no description.
std::optional<VideoDescription> readVideoDescription(RandomAccessFile& file, const Atom& stsd);
std::optional<AudioDescription> readAudioDescription(RandomAccessFile& file, const Atom& stsd);

} // namespace orvane::platform
