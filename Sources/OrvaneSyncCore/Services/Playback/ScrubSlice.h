#pragma once

#include "Platform/AudioFile.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// A short piece of sound, one list of samples a channel, all of one length.
struct AudioSlice {
    double sampleRate = 0; ///< Hz
    std::vector<std::vector<float>> channels;

    std::size_t frameCount() const { return channels.empty() ? 0 : channels.front().size(); }
};

namespace ScrubBlipAudio {

/// `seconds` of the file from a place on, in stereo at the file's rate; less where the file ends. Nothing for
/// a place outside of it and where it cannot be read. Reads: never on the interface thread.
std::optional<AudioSlice> readStereoSlice(platform::AudioFile& file, double atSourceSeconds, double seconds);
/// The first two channels; a single one on both sides. False, and `target` as it was, where `source` has no
/// channel or no frame, or `target` is not two channels with room for as many frames.
bool foldToStereo(const AudioSlice& source, AudioSlice& target);
/// The slice at another rate, as long as it was; what is no number is silent.
AudioSlice atRate(const AudioSlice& slice, double sampleRate);

} // namespace ScrubBlipAudio
} // namespace orvane
