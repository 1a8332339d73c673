#include "Platform/Media/MXFPackages.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>

namespace orvane::platform::mxf {

namespace {

/// Local tags of properties (SMPTE ST 377-1 and its registers).
enum Tag : std::uint16_t {
    instanceUID = 0x3C0A,
    packageUID = 0x4401,
    packageTracks = 0x4403,
    packageCreationDate = 0x4405,
    trackSequence = 0x4803,
    trackEditRate = 0x4B01,
    dataDefinition = 0x0201,
    componentDuration = 0x0202,
    structuralComponents = 0x1001,
    clipPackageID = 0x1101,
    clipStartPosition = 0x1201,
    timecodeStart = 0x1501,
    timecodeBase = 0x1502,
    timecodeDrop = 0x1503,
};

constexpr std::size_t packageIDBytes = 32;
constexpr double longestPosition = 1e12; ///< edit units; many years

/// A component that cannot be counted at its track's rate is counted at its own base.
std::optional<CountedTimecode> timecodeOf(const Set& component, const Rate& track) {
    const auto base = component.property(timecodeBase).u16be(0);
    const auto start = component.property(timecodeStart).u64be(0);
    if (!base || *base == 0 || !start) return std::nullopt;
    const auto frames = static_cast<std::int64_t>(*start);
    constexpr std::int64_t mostFrames = std::int64_t{1} << 40U; ///< many years
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

} // namespace

Packages::Packages(const Header& header) {
    for (const Set& set : header.sets) {
        byIdentity_.emplace(set.label(instanceUID), &set);
        if (set.kind != sourcePackage && set.kind != materialPackage) continue;
        if (set.kind == materialPackage && material_ == nullptr) material_ = &set;
        if (const auto value = set.property(packageUID).slice(0, packageIDBytes))
            byPackageID_.emplace(value->text(), &set);
    }
}

const Set* Packages::find(const Label& identity) const {
    const auto found = byIdentity_.find(identity);
    return identity.empty() || found == byIdentity_.end() ? nullptr : found->second;
}

std::vector<Packages::Track> Packages::tracksOf(const Set& package) const {
    constexpr std::size_t mostTracks = 100, mostComponents = 16; // the start is in the first of them
    std::vector<Track> tracks;
    for (const Label& identity : package.labels(packageTracks)) {
        const Set* set = find(identity);
        if (set == nullptr || set->kind != timelineTrack || tracks.size() >= mostTracks) continue;
        Track track{set, set->rate(trackEditRate), {}};
        if (const Set* inner = find(set->label(trackSequence)); inner != nullptr) {
            if (inner->kind != sequence) {
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

Packages::Essence Packages::essenceOf(const Track& track) const {
    using namespace std::string_view_literals;
    const Set* sequence = find(track.set->label(trackSequence));
    if (sequence == nullptr) return Essence::other;
    const Label definition = sequence->label(dataDefinition);
    constexpr std::size_t kindAt = 8;
    if (definition.size() < kindAt) return Essence::other;
    const std::string_view own = std::string_view(definition).substr(kindAt);
    if (own.starts_with("\x01\x03\x02\x02\x01"sv)) return Essence::picture;
    return own.starts_with("\x01\x03\x02\x02\x02"sv) ? Essence::sound : Essence::other;
}

std::optional<double> Packages::seconds() const { return longestSeconds(false); }
std::optional<double> Packages::pictureSeconds() const { return longestSeconds(true); }

std::optional<double> Packages::longestSeconds(bool ofPictureAlone) const {
    double longest = 0;
    if (material_ == nullptr) return std::nullopt;
    for (const Track& track : tracksOf(*material_)) {
        const Essence essence = essenceOf(track);
        if (essence == Essence::other || (ofPictureAlone && essence != Essence::picture) ||
            track.rate.value() <= 0)
            continue;
        // -1 means that the length was not known when it was written.
        const auto units =
            static_cast<double>(find(track.set->label(trackSequence))->position(componentDuration));
        longest = std::max(longest, units * track.rate.denominator / track.rate.numerator);
    }
    return longest > 0 ? std::optional(longest) : std::nullopt;
}

std::optional<CountedTimecode> Packages::timecodeIn(const std::vector<Track>& tracks) {
    for (const Track& track : tracks)
        for (const Set* component : track.components)
            if (component->kind == timecodeComponent)
                if (const auto timecode = timecodeOf(*component, track.rate)) return timecode;
    return std::nullopt;
}

std::optional<Packages::Clip> Packages::firstClip(const std::vector<Track>& tracks) const {
    for (const Track& track : tracks)
        for (const Set* component : track.components)
            if (component->kind == sourceClip && essenceOf(track) != Essence::other)
                return Clip{component, track.rate};
    return std::nullopt;
}

std::optional<CountedTimecode> Packages::start() const {
    constexpr int firstTape = 2, deepest = 8; ///< after the material and the file
    std::optional<CountedTimecode> zero;
    const Set* package = material_;
    double offset = 0; // seconds into the package
    for (int depth = 0; package != nullptr && depth < deepest; ++depth) {
        const auto tracks = tracksOf(*package);
        if (auto own = timecodeIn(tracks)) {
            if (!zero) zero = own;
            // A tape may be counted from 0; a file that is counted from 0 has no time of its own.
            const double rate = static_cast<double>(own->rateNumerator) / own->rateDenominator;
            if (own->frames > 0 || depth >= firstTape) own->frames += std::llround(offset * rate);
            if (own->frames > 0) return own;
        }
        const Set* next = nullptr;
        if (const auto clip = firstClip(tracks)) {
            const auto source = clip->component->property(clipPackageID).slice(0, packageIDBytes);
            const auto found = source ? byPackageID_.find(Label(source->text())) : byPackageID_.end();
            next = found == byPackageID_.end() ? nullptr : found->second;
            const auto position = static_cast<double>(clip->component->position(clipStartPosition));
            if (clip->rate.value() > 0 && position > 0 && position < longestPosition)
                offset += position / clip->rate.value();
        }
        package = next;
    }
    return zero;
}

std::optional<std::int64_t> Packages::creationTime() const {
    if (material_ == nullptr) return std::nullopt;
    // Year, month, day, hour, minute and second.
    const ByteCursor stamp = material_->property(packageCreationDate);
    const auto year = stamp.u16be(0);
    const auto month = stamp.u8(2), day = stamp.u8(3), hour = stamp.u8(4), minute = stamp.u8(5),
               second = stamp.u8(6);
    if (!year || !second) return std::nullopt;
    using namespace std::chrono;
    const year_month_day date{std::chrono::year{*year}, std::chrono::month{*month}, std::chrono::day{*day}};
    if (!date.ok()) return std::nullopt;
    return duration_cast<std::chrono::seconds>(sys_days(date).time_since_epoch()).count() + *hour * 3600 +
           *minute * 60 + *second;
}

} // namespace orvane::platform::mxf
