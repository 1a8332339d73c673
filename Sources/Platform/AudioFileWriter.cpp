#include "Platform/AudioFileWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <vector>

namespace orvane::platform {

namespace {

static_assert(std::endian::native == std::endian::little, "WAVE files are little-endian, and so is memory");

constexpr std::size_t floatsAtOnce = std::size_t{1} << 18U;
constexpr std::uint32_t sizeElsewhere = 0xFFFFFFFF;
constexpr std::uint16_t floatFormat = 3; // WAVE_FORMAT_IEEE_FLOAT
constexpr std::size_t bytesPerSample = sizeof(float);

template <class T>
void add(std::string& out, T value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void addChunk(std::string& out, std::string_view name, std::string_view body) {
    out += name;
    add(out, static_cast<std::uint32_t>(body.size()));
    out += body;
}

/// Cut after a whole character, or padded with zeros.
void addText(std::string& out, std::string_view text, std::size_t bytes) {
    std::size_t length = std::min(text.size(), bytes);
    const auto continues = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
    while (length > 0 && length < text.size() && continues(text[length])) --length;
    out += text.substr(0, length);
    out.append(bytes - length, '\0');
}

/// Version 1, without dates, a time reference, or measured loudness.
std::string broadcastBody(const AudioFileWriter::Broadcast& broadcast) {
    constexpr std::size_t descriptionBytes = 256, originatorBytes = 32, upToVersion = 346, allBytes = 602;
    std::string body;
    addText(body, broadcast.description, descriptionBytes);
    addText(body, broadcast.originator, originatorBytes);
    body.resize(upToVersion, '\0');
    add(body, std::uint16_t{1});
    body.resize(allBytes, '\0');
    return body;
}

} // namespace

AudioFileWriter::AudioFileWriter(const std::string& path, Format format, Broadcast broadcast,
                                 std::uint64_t largestPlain)
    : format_(format), broadcast_(broadcastBody(broadcast)), largestPlain_(largestPlain), file_(path) {
    pending_.reserve(floatsAtOnce);
    file_.append(header()); // its size does not depend on its contents
}

std::string AudioFileWriter::header() const {
    const std::uint64_t frameBytes = static_cast<std::uint64_t>(format_.channels) * bytesPerSample;
    const std::uint64_t dataBytes = static_cast<std::uint64_t>(frames_) * frameBytes;
    const auto rate = static_cast<std::uint32_t>(std::lround(format_.sampleRate));
    constexpr std::size_t largeSizesBytes = 28;
    constexpr std::uint64_t formBytes = 8; // bytes of the form that its size does not count
    std::string format;
    add(format, floatFormat);
    add(format, static_cast<std::uint16_t>(format_.channels));
    add(format, rate);
    add(format, static_cast<std::uint32_t>(rate * frameBytes));
    add(format, static_cast<std::uint16_t>(frameBytes));
    add(format, std::uint16_t{8 * bytesPerSample});
    add(format, std::uint16_t{0});

    const auto written = [&](bool isLarge, std::uint64_t formSize) {
        std::string out(isLarge ? "RF64" : "RIFF");
        add(out, isLarge ? sizeElsewhere : static_cast<std::uint32_t>(formSize));
        out += "WAVE";
        std::string sizes;
        if (isLarge) {
            add(sizes, formSize);
            add(sizes, dataBytes);
            add(sizes, static_cast<std::uint64_t>(frames_));
        }
        sizes.resize(largeSizesBytes, '\0');
        addChunk(out, isLarge ? "ds64" : "JUNK", sizes);
        addChunk(out, "bext", broadcast_);
        addChunk(out, "fmt ", format);
        std::string frameCount;
        add(frameCount, isLarge ? sizeElsewhere : static_cast<std::uint32_t>(frames_));
        addChunk(out, "fact", frameCount);
        out += "data";
        add(out, isLarge ? sizeElsewhere : static_cast<std::uint32_t>(dataBytes));
        return out;
    };
    const std::uint64_t formSize = written(false, 0).size() + dataBytes - formBytes;
    return written(formSize + formBytes > largestPlain_, formSize);
}

void AudioFileWriter::write(std::span<const float* const> channels, std::size_t frames) {
    const std::size_t step = std::max<std::size_t>(floatsAtOnce / channels.size(), 1);
    for (std::size_t done = 0; done < frames;) {
        const std::size_t some = std::min(step, frames - done);
        if (pending_.size() + some * channels.size() > floatsAtOnce) flush();
        const std::size_t from = pending_.size();
        pending_.resize(from + some * channels.size());
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            float* out = pending_.data() + from + channel;
            for (std::size_t i = 0; i < some; ++i, out += channels.size()) *out = channels[channel][done + i];
        }
        done += some;
    }
    frames_ += static_cast<std::int64_t>(frames);
}

void AudioFileWriter::flush() {
    file_.append({reinterpret_cast<const char*>(pending_.data()), pending_.size() * sizeof(float)});
    pending_.clear();
}

void AudioFileWriter::finish(const NewFile::Decide& decide) {
    flush();
    file_.overwrite(0, header());
    file_.takePlace(decide);
}

} // namespace orvane::platform
