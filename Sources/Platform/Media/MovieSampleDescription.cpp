#include "Platform/Media/MovieSampleDescription.h"

#include "Platform/MediaInspector.h"

#include <array>
#include <bit>
#include <cmath>

namespace orvane::platform {

namespace {

constexpr std::size_t listHeaderBytes = 8;     ///< version, flags, count
constexpr std::size_t videoFieldsBytes = 78;   ///< fields of a video description before its atoms
constexpr std::size_t soundFieldsBytes = 28;   ///< the same for sound, version 0
constexpr std::size_t soundVersion1Bytes = 16; ///< added by QuickTime's version 1
constexpr std::size_t configurationBytes = 512;

struct FirstEntry {
    Atom atom;
    std::uint8_t listVersion = 0;
};

std::optional<FirstEntry> firstEntry(RandomAccessFile& file, const Atom& stsd) {
    const auto version = peekBody(file, stsd, listHeaderBytes).u8(0);
    if (!version) return std::nullopt;
    const auto entry = AtomReader(file, stsd.body + listHeaderBytes, stsd.end).next();
    if (!entry) return std::nullopt;
    return FirstEntry{*entry, *version};
}

/// An encrypted description keeps the original four characters in "sinf"/"frma".
std::uint32_t clearFormat(RandomAccessFile& file, const Atom& entry, std::size_t fieldsBytes) {
    if (entry.type != fourCC("encv") && entry.type != fourCC("drmi")) return entry.type;
    const Atom children{0, entry.start, entry.body + fieldsBytes, entry.end};
    if (children.body > children.end) return entry.type;
    const auto sinf = findChild(file, children, fourCC("sinf"));
    const auto frma = sinf ? findChild(file, *sinf, fourCC("frma")) : std::nullopt;
    return frma ? peekBody(file, *frma, 4).u32be(0).value_or(entry.type) : entry.type;
}

/// Reads bits from the front of a few bytes.
class BitReader {
  public:
    explicit BitReader(const ByteCursor& bytes) : bytes_(bytes) {}
    std::optional<std::uint32_t> take(int count) {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i, ++at_) {
            const auto byte = bytes_.u8(at_ / 8);
            if (!byte) return std::nullopt;
            value = value << 1U | (*byte >> (7 - at_ % 8) & 1U);
        }
        return value;
    }

  private:
    ByteCursor bytes_;
    std::size_t at_ = 0;
};

constexpr std::array<double, 13> aacRates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                             22050, 16000, 12000, 11025, 8000,  7350};
/// Channels of the AAC channel configurations; 0 where the stream itself describes them.
constexpr std::array<std::uint32_t, 15> aacChannels = {0, 1, 2, 3, 4, 5, 6, 8, 0, 0, 0, 7, 8, 0, 8};

std::optional<double> takeAACRate(BitReader& bits) {
    constexpr std::uint32_t writtenOut = 15;
    const auto index = bits.take(4);
    if (!index) return std::nullopt;
    if (*index == writtenOut) return bits.take(24);
    return *index < aacRates.size() ? std::optional(aacRates[*index]) : std::nullopt;
}

/// AudioSpecificConfig, ISO/IEC 14496-3 1.6.2.1. Only explicitly signalled band replication counts.
void applyAACConfiguration(const ByteCursor& configuration, AudioDescription& into) {
    constexpr std::uint32_t escape = 31, bandReplication = 5, parametricStereo = 29;
    BitReader bits(configuration);
    auto objectType = bits.take(5);
    if (objectType == escape) {
        objectType = bits.take(6);
        if (objectType) *objectType += 32;
    }
    auto rate = takeAACRate(bits);
    const auto layout = bits.take(4);
    if (!objectType || !rate || !layout) return;
    std::uint32_t channels = *layout < aacChannels.size() ? aacChannels[*layout] : 0;
    if (objectType == bandReplication || objectType == parametricStereo) {
        if (const auto doubled = takeAACRate(bits)) rate = doubled;
        if (objectType == parametricStereo && channels == 1) channels = 2;
    }
    if (*rate > 0) into.sampleRate = *rate;
    if (channels > 0) into.channels = channels;
}

/// One descriptor of the MPEG-4 systems layer: tag, length in 7-bit groups, body.
struct StreamDescriptor {
    std::uint8_t tag = 0;
    ByteCursor body;
    ByteCursor rest; ///< after the descriptor
};

std::optional<StreamDescriptor> takeDescriptor(const ByteCursor& bytes) {
    const auto tag = bytes.u8(0);
    if (!tag) return std::nullopt;
    std::size_t at = 1, length = 0;
    for (int group = 0; group < 4; ++group) {
        const auto byte = bytes.u8(at++);
        if (!byte) return std::nullopt;
        length = length << 7U | (*byte & 0x7FU);
        if ((*byte & 0x80U) == 0) break;
    }
    // A length that is too large is limited: the fields that matter come first.
    const ByteCursor behind = bytes.from(at);
    const auto body = behind.slice(0, std::min(length, behind.size()));
    return StreamDescriptor{*tag, *body, behind.from(length)};
}

/// The decoder configuration inside "esds": an ES descriptor that holds a decoder descriptor.
void applyElementaryStream(const ByteCursor& esds, AudioDescription& into) {
    constexpr std::uint8_t streamTag = 3, decoderTag = 4, specificTag = 5;
    constexpr std::uint8_t mpeg4Audio = 0x40;
    const auto stream = takeDescriptor(esds.from(4));
    if (!stream || stream->tag != streamTag) return;
    const auto flags = stream->body.u8(2);
    if (!flags) return;
    std::size_t at = 3;
    if ((*flags & 0x80U) != 0) at += 2;
    if ((*flags & 0x40U) != 0) at += 1 + stream->body.u8(at).value_or(0);
    if ((*flags & 0x20U) != 0) at += 2;
    const auto decoder = takeDescriptor(stream->body.from(at));
    if (!decoder || decoder->tag != decoderTag || decoder->body.u8(0) != mpeg4Audio) return;
    const auto specific = takeDescriptor(decoder->body.from(13));
    if (specific && specific->tag == specificTag) applyAACConfiguration(specific->body, into);
}

void applyLossless(const ByteCursor& alac, AudioDescription& into) {
    const auto channels = alac.u8(13);
    const auto rate = alac.u32be(24);
    if (channels.value_or(0) > 0) into.channels = *channels;
    if (rate.value_or(0) > 0) into.sampleRate = *rate;
}

void applyFLAC(const ByteCursor& dfLa, AudioDescription& into) {
    BitReader bits(dfLa.from(4 + 4 + 10)); // after version, block header, block and frame sizes
    const auto rate = bits.take(20), channels = bits.take(3);
    if (!rate || !channels || *rate == 0) return;
    into.sampleRate = *rate;
    into.channels = *channels + 1;
}

/// Opus is always decoded to 48 kHz; only its channel count is read.
void applyOpus(const ByteCursor& dOps, AudioDescription& into) {
    if (const auto channels = dOps.u8(1); channels.value_or(0) > 0) into.channels = *channels;
}

void applyConfigurations(RandomAccessFile& file, const Atom& level, bool inside, AudioDescription& into) {
    AtomReader atoms(file, level);
    while (const auto atom = atoms.next()) {
        // QuickTime packs the configuration into "wave"; there are no deeper levels.
        if (atom->type == fourCC("wave") && !inside) {
            applyConfigurations(file, *atom, true, into);
            continue;
        }
        const auto body = [&] { return peekBody(file, *atom, configurationBytes); };
        if (atom->type == fourCC("esds")) applyElementaryStream(body(), into);
        if (atom->type == fourCC("alac")) applyLossless(body(), into);
        if (atom->type == fourCC("dfLa")) applyFLAC(body(), into);
        if (atom->type == fourCC("dOps")) applyOpus(body(), into);
        if (atom->type == fourCC("srat"))
            if (const auto rate = body().u32be(4)) into.sampleRate = *rate;
    }
}

} // namespace

std::optional<VideoDescription> readVideoDescription(RandomAccessFile& file, const Atom& stsd) {
    const auto entry = firstEntry(file, stsd);
    if (!entry) return std::nullopt;
    constexpr std::size_t widthAt = 24, heightAt = 26;
    const ByteCursor fields = peekBody(file, entry->atom, videoFieldsBytes);
    VideoDescription description;
    description.width = fields.u16be(widthAt).value_or(0);
    description.height = fields.u16be(heightAt).value_or(0);
    description.codec = clearFormat(file, entry->atom, videoFieldsBytes);
    return description;
}

std::optional<AudioDescription> readAudioDescription(RandomAccessFile& file, const Atom& stsd) {
    const auto entry = firstEntry(file, stsd);
    if (!entry) return std::nullopt;
    constexpr std::size_t versionAt = 8, channelsAt = 16, rateAt = 24;
    constexpr std::size_t structSizeAt = 28, wideRateAt = 32, wideChannelsAt = 40;
    constexpr std::size_t atomHeaderBytes = 8;
    constexpr double fixedPointOne = 65536;
    const ByteCursor fields = peekBody(file, entry->atom, wideChannelsAt + 4);
    // A list of version 1 holds ISO descriptions, whose version 1 adds no fields.
    const bool isQuickTime = entry->listVersion == 0;
    const auto version = isQuickTime ? fields.u16be(versionAt).value_or(0) : 0;

    AudioDescription description;
    std::size_t fieldsBytes = soundFieldsBytes;
    if (version == 2) {
        description.channels = fields.u32be(wideChannelsAt).value_or(0);
        description.sampleRate = std::bit_cast<double>(fields.u64be(wideRateAt).value_or(0));
        const std::size_t structSize = fields.u32be(structSizeAt).value_or(0);
        fieldsBytes = structSize > atomHeaderBytes ? structSize - atomHeaderBytes : entry->atom.bodySize();
    } else {
        description.channels = fields.u16be(channelsAt).value_or(0);
        description.sampleRate = fields.u32be(rateAt).value_or(0) / fixedPointOne;
        if (version == 1) fieldsBytes += soundVersion1Bytes;
    }
    if (fieldsBytes < entry->atom.bodySize())
        applyConfigurations(file, {0, 0, entry->atom.body + fieldsBytes, entry->atom.end}, false,
                            description);
    if (!(description.sampleRate > 0 && description.sampleRate <= highestSampleRate))
        description.sampleRate = 0;
    return description;
}

} // namespace orvane::platform
