#include "Platform/Media/MXFHeaders.h"

#include "Platform/Media/MXFSets.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace orvane::platform {

namespace {

using mxf::Label;
using mxf::Set;

/// Local tags of properties (SMPTE ST 377-1 and its registers).
enum Tag : std::uint16_t {
    instanceUID = 0x3C0A,
    packageUID = 0x4401,
    packageTracks = 0x4403,
    packageCreationDate = 0x4405,
    packageDescriptor = 0x4701,
    trackID = 0x4801,
    trackSequence = 0x4803,
    trackEditRate = 0x4B01,
    dataDefinition = 0x0201,
    componentDuration = 0x0202,
    structuralComponents = 0x1001,
    clipPackageID = 0x1101,
    clipTrackID = 0x1102,
    clipStartPosition = 0x1201,
    timecodeStart = 0x1501,
    timecodeBase = 0x1502,
    timecodeDrop = 0x1503,
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

struct Rate {
    std::uint32_t numerator = 0, denominator = 1; ///< per second

    double value() const {
        return denominator == 0 ? 0 : static_cast<double>(numerator) / static_cast<double>(denominator);
    }
};

Rate rateOf(const Set& set, std::uint16_t tag) {
    const ByteCursor value = set.property(tag);
    return {value.u32be(0).value_or(0), value.u32be(4).value_or(1)};
}

std::int64_t positionOf(const Set& set, std::uint16_t tag) {
    return static_cast<std::int64_t>(set.property(tag).u64be(0).value_or(0));
}

/// The last byte but one of a codec's label tells its kind where the first ones are these; what QuickTime
/// calls it. Only what is named here is read without a media library.
std::string codecOf(const Label& coding) {
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

class Reader {
  public:
    explicit Reader(const mxf::Header& header) : header_(header) {
        for (const Set& set : header.sets) byIdentity_.emplace(set.label(instanceUID), &set);
    }

    MXFInspection read() {
        const Set* material = nullptr;
        for (const Set& set : header_.sets)
            if (set.kind == mxf::materialPackage && material == nullptr) material = &set;
        if (material != nullptr) {
            readLength(*material);
            result_.facts.startTimecode = findStart(*material);
            result_.facts.headerTime = creationTime(*material);
        }
        readDescriptors();
        const bool hasTracks = !result_.facts.videoTracks.empty() || !result_.facts.audioTracks.empty();
        result_.isComplete = isKnown_ && hasTracks && result_.facts.durationSeconds.value_or(0) > 0;
        return std::move(result_);
    }

  private:
    struct Track {
        const Set* set = nullptr;
        Rate rate;
        std::vector<const Set*> components; ///< a sequence's, or the one that stands in its place
    };

    const Set* find(const Label& identity) const {
        const auto found = byIdentity_.find(identity);
        return found == byIdentity_.end() ? nullptr : found->second;
    }

    std::vector<Track> tracksOf(const Set& package) const {
        constexpr std::size_t mostTracks = 1000, mostComponents = 1000;
        std::vector<Track> tracks;
        for (const Label& identity : package.labels(packageTracks)) {
            const Set* set = find(identity);
            if (set == nullptr || set->kind != mxf::timelineTrack || tracks.size() >= mostTracks) continue;
            Track track{set, rateOf(*set, trackEditRate), {}};
            if (const Set* inner = find(set->label(trackSequence)); inner != nullptr) {
                if (inner->kind != mxf::sequence) {
                    track.components.push_back(inner);
                } else {
                    for (const Label& component : inner->labels(structuralComponents))
                        if (const Set* part = find(component);
                            part != nullptr && track.components.size() < mostComponents)
                            track.components.push_back(part);
                }
            }
            tracks.push_back(std::move(track));
        }
        return tracks;
    }

    bool isPictureOrSound(const Track& track) const {
        using namespace std::string_view_literals;
        const Set* sequence = find(track.set->label(trackSequence));
        if (sequence == nullptr) return false;
        const Label definition = sequence->label(dataDefinition);
        constexpr std::size_t kindAt = 8;
        if (definition.size() < kindAt) return false;
        const std::string_view own = std::string_view(definition).substr(kindAt);
        return own.starts_with("\x01\x03\x02\x02\x01"sv) || own.starts_with("\x01\x03\x02\x02\x02"sv);
    }

    /// The longest of picture and sound; -1 stands for a length that was not known when it was written.
    void readLength(const Set& material) {
        for (const Track& track : tracksOf(material)) {
            const Set* sequence = find(track.set->label(trackSequence));
            if (!isPictureOrSound(track) || track.rate.value() <= 0) continue;
            const std::int64_t units = positionOf(*sequence, componentDuration);
            takeLength(static_cast<double>(units) * track.rate.denominator / track.rate.numerator);
        }
    }

    void takeLength(double seconds) {
        if (seconds > result_.facts.durationSeconds.value_or(0)) result_.facts.durationSeconds = seconds;
    }

    /// A component that cannot be counted by its track's rate is counted by its own base.
    static std::optional<CountedTimecode> timecodeOf(const Set& component, const Rate& track) {
        const auto base = component.property(timecodeBase).u16be(0);
        const auto start = component.property(timecodeStart).u64be(0);
        if (!base || *base == 0 || !start) return std::nullopt;
        const auto frames = static_cast<std::int64_t>(*start);
        constexpr std::int64_t mostFrames = std::int64_t{1} << 40U; ///< ages
        if (frames < 0 || frames > mostFrames) return std::nullopt;
        CountedTimecode timecode{.frames = frames,
                                 .rateNumerator = *base,
                                 .rateDenominator = 1,
                                 .isDrop = component.property(timecodeDrop).u8(0).value_or(0) != 0};
        if (std::lround(track.value()) == *base) {
            timecode.rateNumerator = track.numerator;
            timecode.rateDenominator = track.denominator;
        } else if (std::abs(track.value() - std::round(track.value())) > 0.01) {
            timecode.rateNumerator = *base * 1000U; // a base of 25 under 50 frames, or of 30 under 59.94
            timecode.rateDenominator = 1001;
        }
        return timecode;
    }

    std::optional<CountedTimecode> timecodeIn(const std::vector<Track>& tracks) const {
        for (const Track& track : tracks)
            for (const Set* component : track.components)
                if (component->kind == mxf::timecodeComponent)
                    if (const auto timecode = timecodeOf(*component, track.rate)) return timecode;
        return std::nullopt;
    }

    const Set* packageOf(const Label& identity) const {
        for (const Set& set : header_.sets) {
            if (set.kind != mxf::sourcePackage && set.kind != mxf::materialPackage) continue;
            const auto value = set.property(packageUID).slice(0, packageIDBytes);
            if (value && value->text() == identity) return &set;
        }
        return nullptr;
    }

    /// From package to package, along the first clip of the first track of picture or sound.
    std::optional<CountedTimecode> findStart(const Set& material) const {
        constexpr int deepest = 8;
        std::optional<CountedTimecode> zero;
        const Set* package = &material;
        double offset = 0; // seconds into the package
        for (int depth = 0; package != nullptr && depth < deepest; ++depth) {
            const auto tracks = tracksOf(*package);
            if (auto own = timecodeIn(tracks)) {
                const double rate = static_cast<double>(own->rateNumerator) / own->rateDenominator;
                own->frames += std::llround(offset * rate);
                if (own->frames > 0) return own;
                if (!zero) zero = own;
            }
            const Set* next = nullptr;
            for (const Track& track : tracks) {
                if (next != nullptr || !isPictureOrSound(track)) continue;
                for (const Set* component : track.components) {
                    if (component->kind != mxf::sourceClip) continue;
                    const auto source = component->property(clipPackageID).slice(0, packageIDBytes);
                    next = source ? packageOf(Label(source->text())) : nullptr;
                    const auto position = static_cast<double>(positionOf(*component, clipStartPosition));
                    if (track.rate.value() > 0 && position > 0 && position < longestPosition)
                        offset += position / track.rate.value();
                    break;
                }
            }
            package = next;
        }
        return zero;
    }

    /// Year, month, day, hour, minute and second, in UTC.
    static std::optional<std::int64_t> creationTime(const Set& package) {
        const ByteCursor stamp = package.property(packageCreationDate);
        const auto year = stamp.u16be(0);
        const auto month = stamp.u8(2), day = stamp.u8(3), hour = stamp.u8(4), minute = stamp.u8(5),
                   second = stamp.u8(6);
        if (!year || !second) return std::nullopt;
        using namespace std::chrono;
        const year_month_day date{std::chrono::year{*year}, std::chrono::month{*month},
                                  std::chrono::day{*day}};
        if (!date.ok()) return std::nullopt;
        return duration_cast<seconds>(sys_days(date).time_since_epoch()).count() + *hour * 3600 +
               *minute * 60 + *second;
    }

    /// Those of the first package that describes a file. A descriptor of several lists them in their order.
    void readDescriptors() {
        for (const Set& set : header_.sets) {
            if (set.kind != mxf::sourcePackage) continue;
            const Set* descriptor = find(set.label(packageDescriptor));
            if (descriptor == nullptr) continue;
            const auto parts = descriptor->labels(subDescriptors);
            // Descriptors of pictures list sub-descriptors too, which say how the codec was set up.
            take(*descriptor);
            for (const Label& part : parts)
                if (const Set* one = find(part)) take(*one);
        }
    }

    void take(const Set& descriptor) {
        const Rate rate = rateOf(descriptor, descriptorRate);
        const bool isPicture = !descriptor.property(storedWidth).empty();
        const Rate sampleRate = rateOf(descriptor, audioRate);
        const bool isSound = !isPicture && sampleRate.value() > 0;
        if (!isPicture && !isSound) return;
        if (rate.value() > 0 && !result_.facts.durationSeconds) {
            const auto units = static_cast<double>(positionOf(descriptor, containerDuration));
            takeLength(units / rate.value());
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
        // Heights are those of a field where the fields are kept apart.
        constexpr std::uint8_t separateFields = 1, segmentedFrame = 4;
        const auto layout = descriptor.property(frameLayout).u8(0).value_or(0);
        if (layout == separateFields || layout == segmentedFrame) height *= 2;
        if (width > 0 && height > 0) {
            track.width = width;
            track.height = height;
        }
        if (rate.value() > 0) track.nominalFrameRate = static_cast<double>(static_cast<float>(rate.value()));
        const std::string codec = codecOf(descriptor.label(pictureCoding));
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

    static constexpr std::size_t packageIDBytes = 32;
    static constexpr double longestPosition = 1e12; ///< edit units; ages

    const mxf::Header& header_;
    std::map<Label, const Set*> byIdentity_;
    MXFInspection result_;
    bool isKnown_ = true;
};

} // namespace

std::optional<MXFInspection> inspectMXF(RandomAccessFile& file) {
    const auto header = mxf::readHeader(file);
    return header ? std::optional(Reader(*header).read()) : std::nullopt;
}

} // namespace orvane::platform
