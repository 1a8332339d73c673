#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace orvane {

namespace {

constexpr std::size_t blockFrames = 16384;
constexpr int mostBlocks = 256;
constexpr double secondsHeard = 2;

/// The channels that are searched in one pass: one or all. The channels before the first are read into one
/// shared array that is not used.
struct Listening {
    int firstChannel = 0;
    std::vector<LTCWordReader> readers;
};

Listening listen(platform::AudioFile& file, int channelIndex, const std::stop_token& stop) {
    Listening result;
    const int last = file.channelCount() - 1;
    int count = 1;
    if (channelIndex == LTCDecoder::anyChannel)
        count = std::min(last + 1, LTCDecoder::mostChannels);
    else
        result.firstChannel = std::clamp(channelIndex, 0, last);
    const auto before = static_cast<std::size_t>(result.firstChannel),
               heard = static_cast<std::size_t>(count);

    std::vector<std::vector<float>> blocks(heard, std::vector<float>(blockFrames));
    std::vector<float> unheard(before == 0 ? 0 : blockFrames);
    std::vector<float*> targets(before, unheard.data());
    for (auto& block : blocks) targets.push_back(block.data());
    result.readers.assign(heard, LTCWordReader(file.sampleRate()));

    const auto limit = static_cast<std::uint64_t>(
        std::min(secondsHeard * file.sampleRate(), static_cast<double>(blockFrames) * mostBlocks));
    std::uint64_t position = 0;
    while (position < limit) {
        platform::throwIfStopped(stop);
        const std::size_t got = std::min(file.read(targets, blockFrames), blockFrames);
        if (got == 0) break;
        for (std::size_t i = 0; i < heard; ++i)
            result.readers[i].hear(std::span<const float>(blocks[i]).first(got));
        position += got;
    }
    for (auto& reader : result.readers) reader.finish();
    return result;
}

std::string text(const LTCWord& word) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%02d", word.hours, word.minutes, word.seconds,
                  word.frames);
    return text.data();
}

} // namespace

std::optional<LTCDecoder::Frame> LTCDecoder::decodeFirstFrame(platform::AudioFile& file, int channelIndex,
                                                              std::optional<TimecodeFrameRate> stated,
                                                              const std::stop_token& stop) {
    const double sampleRate = file.sampleRate();
    if (!(sampleRate > 0) || file.channelCount() < 1) return std::nullopt;
    const Listening heard = listen(file, channelIndex, stop);
    for (std::size_t i = 0; i < heard.readers.size(); ++i) {
        const auto reading = readLTC(heard.readers[i].words(), sampleRate, stated);
        if (!reading) continue;
        // The level change that completes a frame is recognised with the sample after it.
        const double completedIn = std::floor(std::ceil(reading->first.endsAt) / blockFrames) * blockFrames;
        return Frame{text(reading->first), completedIn / sampleRate, reading->first.beginsAt / sampleRate,
                     heard.firstChannel + static_cast<int>(i), reading->start};
    }
    return std::nullopt;
}

std::optional<LTCDecoder::Frame> LTCDecoder::decodeFirstFrame(const std::string& path, int channelIndex,
                                                              std::optional<TimecodeFrameRate> stated,
                                                              const std::stop_token& stop) {
    const auto file = platform::AudioFile::openAllTracks(path);
    if (!file) return std::nullopt;
    return decodeFirstFrame(*file, channelIndex, stated, stop);
}

} // namespace orvane
