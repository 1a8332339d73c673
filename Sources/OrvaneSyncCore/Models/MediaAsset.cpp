#include "OrvaneSyncCore/Models/MediaAsset.h"

#include "OrvaneSyncCore/Models/MediaAssetFields.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr std::size_t dateDigits = 6;

bool isSeparator(char c) { return c == '_' || c == '-' || c == '.'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

int twoDigits(std::string_view text, std::size_t at) { return (text[at] - '0') * 10 + (text[at + 1] - '0'); }

/// Six digits read as YYMMDD; the years 80 to 99 are 1980 to 1999.
std::optional<calendar::Day> dayFromDigits(std::string_view digits) {
    const int yy = twoDigits(digits, 0), month = twoDigits(digits, 2), day = twoDigits(digits, 4);
    if (month < 1 || month > 12 || day < 1 || day > 31) return std::nullopt;
    return calendar::Day{yy > 79 ? 1900 + yy : 2000 + yy, month, day};
}

/// Equal to repeated searches for (?:^|[_\-.])(\d{6})(?:[_\-.]|$): a match includes the separators on both
/// sides, so of two dates with a single separator between them only the first is found.
std::optional<calendar::Day> dayInName(std::string_view name) {
    std::size_t at = 0;
    while (at + dateDigits <= name.size()) {
        const bool separated = isSeparator(name[at]);
        if (at != 0 && !separated) {
            ++at;
            continue;
        }
        const std::size_t first = separated ? at + 1 : at;
        const std::string_view digits = name.substr(first, dateDigits);
        const std::size_t end = first + dateDigits;
        const bool matches = digits.size() == dateDigits &&
                             std::all_of(digits.begin(), digits.end(), isDigit) &&
                             (end == name.size() || isSeparator(name[end]));
        if (!matches) {
            ++at;
            continue;
        }
        if (const auto day = dayFromDigits(digits)) return day;
        at = end + 1;
    }
    return std::nullopt;
}

std::string wholeKilohertz(double sampleRate) {
    const double kilohertz = std::trunc(sampleRate / 1000);
    return std::isfinite(kilohertz) ? platform::text::formatted("%.0f", kilohertz) : "?";
}

} // namespace

std::optional<AssetKind> assetKindFrom(const FileURL& url) {
    const std::string extension = url.lowercasedExtension();
    const auto among = [&](const auto& set) {
        return std::find(set.begin(), set.end(), extension) != set.end();
    };
    if (among(videoExtensions)) return AssetKind::video;
    if (among(audioExtensions)) return AssetKind::audio;
    return std::nullopt;
}

MediaAsset::MediaAsset(FileURL location, AssetKind assetKind)
    : MediaAsset(UUID::random(), std::move(location), assetKind) {}

MediaAsset::MediaAsset(UUID identity, FileURL location, AssetKind assetKind)
    : id(identity), url(std::move(location)), kind(assetKind), filename(url.lastPathComponent()) {}

double MediaAsset::slowMotionFactor() const {
    return OffspeedDetector::slowMotionFactor(sensorFrameRate, projectFrameRate);
}

bool MediaAsset::isOffspeed() const {
    return OffspeedDetector::isOffspeed(sensorFrameRate, projectFrameRate);
}

bool MediaAsset::isSuspectedOffspeedUnconfirmed() const {
    return offspeedConfidence && offspeedConfidence->kind == OffspeedConfidence::Kind::suspectedUnconfirmed;
}

SourceRateDomain MediaAsset::sourceRateDomain() const {
    if (sourceRateDomainOverride) return *sourceRateDomainOverride;
    return deriveSourceRateDomain(frameRate, sensorFrameRate, projectFrameRate);
}

std::optional<double> MediaAsset::realDurationSeconds() const {
    if (!durationSeconds || sourceRateDomain() == SourceRateDomain::sensorRate) return durationSeconds;
    return *durationSeconds / slowMotionFactor();
}

bool MediaAsset::isAtmo() const {
    return FilenameUtils::isAtmo(filename) || (ixmlData && ixmlData->isWildTrack());
}

std::string MediaAsset::filenameStem() const {
    return std::string(FilenameUtils::withoutExtension(filename));
}

std::string MediaAsset::normalizedName() const {
    return platform::text::lowercased(FilenameUtils::withoutExtension(filename));
}

std::string MediaAsset::formatDescription() const {
    if (kind == AssetKind::audio)
        return (channelCount ? std::to_string(*channelCount) : "?") + "ch " +
               (sampleRate ? wholeKilohertz(*sampleRate) : "?") + "kHz";
    const std::string size =
        width && height ? std::to_string(*width) + "x" + std::to_string(*height) : std::string("?");
    return size + " " + (frameRate ? platform::text::formatted("%.3g fps", *frameRate) : "? fps");
}

std::optional<Date> MediaAsset::shootDay() const {
    calendar::DayStarts starts;
    return shootDay(starts);
}

std::optional<Date> MediaAsset::shootDay(calendar::DayStarts& starts) const {
    if (const auto day = dayInName(filename)) {
        // A running number of six digits may look like a date of long ago. A clock that lost its date is
        // behind, so an earlier date in the file does not refute the name. Its zone makes no difference.
        constexpr std::chrono::days longAgo{2 * 365};
        const auto named = starts.of(*day);
        if (!named || !contentCreatedDate || *contentCreatedDate - *named < longAgo) return named;
    }
    const auto date = localCreatedDate();
    return date ? std::optional(starts.of(*date)) : std::nullopt;
}

std::optional<Date> MediaAsset::localCreatedDate() const {
    if (!contentCreatedDate || !dateZoneMinutes) return contentCreatedDate;
    return calendar::withClockOf(*contentCreatedDate, *dateZoneMinutes);
}

std::optional<Date> MediaAsset::shootDateFromFilename(std::string_view name) {
    const auto day = dayInName(name);
    return day ? calendar::noon(*day) : std::nullopt;
}

JSON toJSON(AssetKind kind) { return kind == AssetKind::video ? "video" : "audio"; }

template <>
AssetKind fromJSON<AssetKind>(const JSON& json) {
    const auto text = fromJSON<std::string>(json);
    if (text == "video") return AssetKind::video;
    if (text == "audio") return AssetKind::audio;
    throw DecodingError("unknown case \"" + text + "\"");
}

JSON toJSON(const MediaAsset& record) { return fieldsToJSON(record); }

template <>
MediaAsset fromJSON<MediaAsset>(const JSON& json) {
    return filledFromJSON(json, MediaAsset(UUID(), FileURL(), AssetKind::video));
}

template <>
MediaAsset fromJSON<MediaAsset>(const JSONView& json) {
    return filledFromJSON(JSONMembers(json), MediaAsset(UUID(), FileURL(), AssetKind::video));
}

} // namespace orvane
