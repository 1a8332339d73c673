#include "MediaFactory/WaveMaker.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace orvane::test {

namespace {

constexpr std::uint32_t sizeElsewhere = 0xFFFFFFFF;

std::uint64_t sampleBytes(SampleFormat format) {
    switch (format) {
    case SampleFormat::pcm8:
        return 1;
    case SampleFormat::pcm16:
        return 2;
    case SampleFormat::pcm24:
        return 3;
    case SampleFormat::pcm32:
    case SampleFormat::float32:
        return 4;
    }
    return 0;
}

std::uint64_t quantized(float value, int bits) {
    const double full = std::ldexp(1.0, bits - 1);
    const double scaled = std::clamp(std::nearbyint(static_cast<double>(value) * full), -full, full - 1);
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(scaled));
}

std::string encoded(float value, SampleFormat format) {
    switch (format) {
    case SampleFormat::pcm8:
        return std::string(1, static_cast<char>((quantized(value, 8) + 128U) & 0xFFU));
    case SampleFormat::pcm16:
        return le16(quantized(value, 16));
    case SampleFormat::pcm24:
        return le24(quantized(value, 24));
    case SampleFormat::pcm32:
        return le32(quantized(value, 32));
    case SampleFormat::float32:
        return le32(std::bit_cast<std::uint32_t>(value));
    }
    return {};
}

std::string element(std::string_view name, const std::string& text) {
    if (text.empty()) return {};
    const std::string tag(name);
    return "<" + tag + ">" + text + "</" + tag + ">";
}

} // namespace

WaveMaker& WaveMaker::format(const WaveFormat& format) {
    format_ = format;
    const bool isFloat = format.samples == SampleFormat::float32;
    const std::uint64_t bits = sampleBytes(format.samples) * 8;
    const std::uint64_t plainTag = isFloat ? 3 : 1;
    std::string body = le16(format.extensible ? 0xFFFE : plainTag) +
                       le16(static_cast<std::uint64_t>(format.channels)) + le32(format.sampleRate) +
                       le32(format.sampleRate * blockAlign()) + le16(blockAlign()) + le16(bits);
    if (format.extensible)
        body += le16(22) + le16(bits) + le32(0) + le16(plainTag) +
                std::string("\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 14);
    return chunk("fmt ", body);
}

WaveMaker& WaveMaker::bext(const BroadcastExtension& extension) {
    const std::string body = field(extension.description, 256) + field(extension.originator, 32) +
                             field("", 32) + field(extension.date, 10) + field(extension.time, 8) +
                             le64(extension.timeReference) + le16(1);
    return chunk("bext", field(body, extension.bytes));
}

WaveMaker& WaveMaker::iXML(std::string_view document) { return chunk("iXML", document); }

WaveMaker& WaveMaker::chunk(std::string_view id, std::string_view body) {
    chunkClaiming(id, static_cast<std::uint32_t>(body.size()), body);
    chunks_.appendZeros(body.size() % 2);
    return *this;
}

WaveMaker& WaveMaker::chunkClaiming(std::string_view id, std::uint32_t claimed, std::string_view body) {
    chunks_.append(field(id, 4)).append(le32(claimed)).append(body);
    return *this;
}

WaveMaker& WaveMaker::samples(const std::vector<float>& interleaved) {
    std::string body;
    for (const float value : interleaved) body += encoded(value, format_.samples);
    return data(SparseBytes().append(body), std::nullopt);
}

WaveMaker& WaveMaker::silence(std::uint64_t frames) {
    return data(SparseBytes().appendZeros(frames * blockAlign()), std::nullopt);
}

WaveMaker& WaveMaker::silenceClaiming(std::uint32_t claimed, std::uint64_t frames) {
    return data(SparseBytes().appendZeros(frames * blockAlign()), claimed);
}

WaveMaker& WaveMaker::rf64() {
    rf64_ = true;
    return *this;
}

WaveMaker& WaveMaker::data(const SparseBytes& body, std::optional<std::uint32_t> claimed) {
    dataBytes_ = body.size();
    chunks_.append("data")
        .append(le32(rf64_ ? sizeElsewhere : claimed.value_or(static_cast<std::uint32_t>(body.size()))))
        .append(body)
        .appendZeros(body.size() % 2);
    return *this;
}

std::uint64_t WaveMaker::blockAlign() const {
    return sampleBytes(format_.samples) * static_cast<std::uint64_t>(format_.channels);
}

SparseBytes WaveMaker::sparse() const {
    SparseBytes chunks;
    if (rf64_)
        chunks.append("ds64").append(le32(28)).append(
            le64(chunks_.size() + 40) + le64(dataBytes_) +
            le64(dataBytes_ / std::max<std::uint64_t>(blockAlign(), 1)) + le32(0));
    chunks.append(chunks_);
    return SparseBytes()
        .append(rf64_ ? "RF64" : "RIFF")
        .append(le32(rf64_ ? sizeElsewhere : 4 + chunks.size()))
        .append("WAVE")
        .append(chunks);
}

std::string IXMLText::text() const {
    std::string list;
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const std::string index = std::to_string(i + 1);
        list += "<TRACK>" + element("CHANNEL_INDEX", index) + element("INTERLEAVE_INDEX", index) +
                element("NAME", tracks[i]) + "</TRACK>";
    }
    const std::string speed = element("TIMECODE_RATE", timecodeRate);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><BWFXML>" + element("PROJECT", project) +
           element("SCENE", scene) + element("TAKE", take) + element("TAPE", tape) + element("NOTE", note) +
           element("WILD_TRACK", wildTrack) + element("SPEED", speed) + element("TRACK_LIST", list) +
           "</BWFXML>";
}

} // namespace orvane::test
