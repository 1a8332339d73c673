#include "OrvaneSyncCore/Services/Playback/ScrubSlice.h"

#include "Platform/SincResampler.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace orvane {

std::optional<AudioSlice> ScrubBlipAudio::readStereoSlice(platform::AudioFile& file, double atSourceSeconds,
                                                          double seconds) {
    const double rate = file.sampleRate();
    if (!(rate > 0) || !(seconds > 0)) return std::nullopt;
    const double place = std::round(rate * atSourceSeconds);
    if (!(place >= 0) || place >= static_cast<double>(file.frameCount())) return std::nullopt;
    const auto start = static_cast<std::int64_t>(place);
    const auto count = static_cast<std::size_t>(
        std::min(std::floor(rate * seconds), static_cast<double>(file.frameCount() - start)));
    if (count == 0 || file.channelCount() <= 0 || !file.seek(start)) return std::nullopt;
    AudioSlice read{rate,
                    std::vector(static_cast<std::size_t>(file.channelCount()), std::vector<float>(count))};
    std::size_t done = 0;
    std::vector<float*> arrays(read.channels.size());
    while (done < count) {
        for (std::size_t c = 0; c < arrays.size(); ++c) arrays[c] = read.channels[c].data() + done;
        const std::size_t got = file.read(arrays, count - done);
        if (got == 0) break;
        done += got;
    }
    for (auto& channel : read.channels) channel.resize(done);
    AudioSlice stereo{rate, std::vector(2, std::vector<float>(done))};
    if (!foldToStereo(read, stereo)) return std::nullopt;
    return stereo;
}

bool ScrubBlipAudio::foldToStereo(const AudioSlice& source, AudioSlice& target) {
    const std::size_t frames = source.frameCount();
    if (frames == 0 || target.channels.size() != 2 || target.frameCount() < frames) return false;
    std::ranges::copy(source.channels[0], target.channels[0].begin());
    std::ranges::copy(source.channels[source.channels.size() > 1 ? 1 : 0], target.channels[1].begin());
    return true;
}

AudioSlice ScrubBlipAudio::atRate(const AudioSlice& slice, double sampleRate) {
    AudioSlice converted = slice;
    for (auto& channel : converted.channels) platform::vector::silenceNonFinite(channel);
    if (slice.sampleRate == sampleRate || slice.frameCount() == 0) return converted;
    const auto frames = static_cast<std::size_t>(
        std::ceil(static_cast<double>(slice.frameCount()) * sampleRate / slice.sampleRate));
    converted.channels = platform::resampled(converted.channels, slice.sampleRate, sampleRate, frames);
    converted.sampleRate = sampleRate;
    return converted;
}

} // namespace orvane
