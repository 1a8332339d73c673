#pragma once

#include "Platform/AudioFile.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// A short piece of sound: a list of samples for each channel, all of the same length.
struct AudioSlice {
    double sampleRate = 0; ///< Hz
    std::vector<std::vector<float>> channels;

    std::size_t frameCount() const { return channels.empty() ? 0 : channels.front().size(); }
};

namespace ScrubBlipAudio {

/// `seconds` of the file from a position, in stereo at the file's rate; shorter at the end of the file.
/// Absent if the position is outside the file or reading fails. Reads the file: never on the interface
/// thread.
std::optional<AudioSlice> readStereoSlice(platform::AudioFile& file, double atSourceSeconds, double seconds);
/// Copies the first two channels; a single channel is copied to both. Returns false and leaves `target`
/// unchanged if `source` has no channel or no frame, or if `target` does not have two channels with enough
/// room.
bool foldToStereo(const AudioSlice& source, AudioSlice& target);
/// The slice resampled with the same duration; samples that are not finite become silence.
AudioSlice atRate(const AudioSlice& slice, double sampleRate);

} // namespace ScrubBlipAudio
} // namespace orvane
