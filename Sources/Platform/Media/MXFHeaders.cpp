#include "Platform/Media/MXFHeaders.h"

#include "Platform/Media/MXFPackages.h"
#include "Platform/Media/MXFSets.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace orvane::platform {

namespace {

using mxf::Label;
using mxf::Rate;
using mxf::Set;

/// Local tags of properties (SMPTE ST 377-1 and its registers).
enum Tag : std::uint16_t {
    packageDescriptor = 0x4701,
    subDescriptors = 0x3F01,
    descriptorRate = 0x3001,
    containerDuration = 0x3002,
    pictureCoding = 0x3201,
    storedHeight = 0x3202,
    storedWidth = 0x3203,
    displayHeight = 0x3208,
    displayWidth = 0x3209,
    frameLayout = 0x320C,
    audioRate = 0x3D03,
    channelCount = 0x3D07,
};

/// QuickTime's code for the codec, by the first bytes of its label. Only the codecs listed here are read
/// without a media library.
std::string codecOfLabel(const Label& coding) {
    using namespace std::string_view_literals;
    struct Codec {
        std::string_view family; ///< bytes 8 and following of the label
        std::string_view fourCC;
    };
    static constexpr std::array codecs = {
        Codec{"\x04\x01\x02\x02\x01\x01"sv, "m2v1"},     Codec{"\x04\x01\x02\x02\x01\x02"sv, "m2v1"},
        Codec{"\x04\x01\x02\x02\x01\x03"sv, "m2v1"},     Codec{"\x04\x01\x02\x02\x01\x04"sv, "m2v1"},
        Codec{"\x04\x01\x02\x02\x01\x31"sv, "avc1"},     Codec{"\x04\x01\x02\x02\x01\x32"sv, "avc1"},
        Codec{"\x04\x01\x02\x02\x02"sv, "dvcp"},         Codec{"\x04\x01\x02\x02\x03\x01"sv, "mjp2"},
        Codec{"\x04\x01\x02\x02\x71"sv, "AVdn"},         Codec{"\x04\x01\x02\x02\x03\x06\x01"sv, "apco"},
        Codec{"\x04\x01\x02\x02\x03\x06\x02"sv, "apcs"}, Codec{"\x04\x01\x02\x02\x03\x06\x03"sv, "apcn"},
        Codec{"\x04\x01\x02\x02\x03\x06\x04"sv, "apch"}, Codec{"\x04\x01\x02\x02\x03\x06\x05"sv, "ap4h"},
        Codec{"\x04\x01\x02\x02\x03\x06\x06"sv, "ap4x"},
    };
    constexpr std::size_t familyAt = 8;
    if (coding.size() < familyAt) return {};
    const std::string_view own = std::string_view(coding).substr(familyAt);
    for (const Codec& codec : codecs)
        if (own.starts_with(codec.family)) return std::string(codec.fourCC);
    return {};
}

class HeaderReader {
  public:
    explicit HeaderReader(const mxf::Header& header) : header_(header), packages_(header) {}

    MXFInspection read() {
        result_.facts.durationSeconds = packages_.seconds();
        result_.facts.startTimecode = packages_.start();
        result_.facts.headerTime = packages_.creationTime();
        result_.facts.heldShare = header_.heldShare;
        readDescriptors();
        const bool hasTracks = !result_.facts.videoTracks.empty() || !result_.facts.audioTracks.empty();
        result_.isComplete = isKnown_ && hasTracks && result_.facts.durationSeconds;
        return std::move(result_);
    }

  private:
    /// Reads the descriptors of the first package that describes picture or sound. A multiple descriptor
    /// lists them in their order.
    void readDescriptors() {
        constexpr std::size_t mostPackages = 100, mostParts = 100;
        std::size_t seen = 0;
        for (const Set& set : header_.sets) {
            if (set.kind != mxf::sourcePackage) continue;
            if (seen++ >= mostPackages || !result_.facts.videoTracks.empty() ||
                !result_.facts.audioTracks.empty())
                return;
            const Set* descriptor = packages_.find(set.label(packageDescriptor));
            if (descriptor == nullptr) continue;
            // Descriptors of pictures list sub-descriptors too, which say how the codec was set up.
            take(*descriptor);
            auto parts = descriptor->labels(subDescriptors);
            parts.resize(std::min(parts.size(), mostParts));
            for (const Label& part : parts)
                if (const Set* one = packages_.find(part)) take(*one);
        }
    }

    void take(const Set& descriptor) {
        const Rate rate = descriptor.rate(descriptorRate);
        const bool isPicture = !descriptor.property(storedWidth).empty();
        const Rate sampleRate = descriptor.rate(audioRate);
        const bool isSound = !isPicture && sampleRate.value() > 0;
        if (!isPicture && !isSound) return;
        if (rate.value() > 0 && !result_.facts.durationSeconds) {
            const auto units = static_cast<double>(descriptor.position(containerDuration));
            if (units > 0) result_.facts.durationSeconds = units / rate.value();
        }
        if (isPicture)
            addPicture(descriptor, rate);
        else
            addSound(descriptor, sampleRate);
    }

    void addPicture(const Set& descriptor, const Rate& rate) {
        const auto pixels = [&](std::uint16_t shown, std::uint16_t stored) {
            const auto own = descriptor.property(shown).u32be(0);
            return own && *own > 0 ? *own : descriptor.property(stored).u32be(0).value_or(0);
        };
        MediaInspection::VideoTrack track;
        double height = pixels(displayHeight, storedHeight);
        const double width = pixels(displayWidth, storedWidth);
        // The height is that of one field if the fields are separate.
        constexpr std::uint8_t separateFields = 1, segmentedFrame = 4;
        const auto layout = descriptor.property(frameLayout).u8(0).value_or(0);
        if (layout == separateFields || layout == segmentedFrame) height *= 2;
        if (width > 0 && height > 0) {
            track.width = width;
            track.height = height;
        }
        if (rate.value() > 0) track.nominalFrameRate = static_cast<double>(static_cast<float>(rate.value()));
        if (result_.facts.videoTracks.empty()) track.endSeconds = packages_.pictureSeconds();
        const std::string codec = codecOfLabel(descriptor.label(pictureCoding));
        if (!codec.empty()) track.codecFourCC = codec;
        isKnown_ = isKnown_ && track.width && track.nominalFrameRate && track.codecFourCC;
        result_.facts.videoTracks.push_back(std::move(track));
    }

    void addSound(const Set& descriptor, const Rate& sampleRate) {
        MediaInspection::AudioTrack track;
        constexpr std::uint32_t mostChannels = 65535;
        const auto channels = descriptor.property(channelCount).u32be(0).value_or(0);
        if (channels > 0 && channels <= mostChannels) track.channelCount = static_cast<int>(channels);
        if (sampleRate.value() <= highestSampleRate) track.sampleRate = sampleRate.value();
        isKnown_ = isKnown_ && track.channelCount && track.sampleRate;
        result_.facts.audioTracks.push_back(track);
    }

    const mxf::Header& header_;
    const mxf::Packages packages_;
    MXFInspection result_;
    bool isKnown_ = true; ///< everything needed is known of each track
};

} // namespace

std::optional<MXFInspection> inspectMXF(RandomAccessFile& file) {
    const auto header = mxf::readHeader(file);
    return header ? std::optional(HeaderReader(*header).read()) : std::nullopt;
}

} // namespace orvane::platform
