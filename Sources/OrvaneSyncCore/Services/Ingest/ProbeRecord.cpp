#include "OrvaneSyncCore/Services/Ingest/ProbeRecord.h"

#include "OrvaneSyncCore/Models/MediaAssetFields.h"
#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

namespace orvane {

namespace {

/// Some file systems store dates with less precision than others, and copying a file may round its date.
constexpr double dateTolerance = 1.0; // seconds

template <class T>
constexpr std::size_t caseCount = 2;
template <>
constexpr std::size_t caseCount<TimecodeFrameRate> = timecodeFrameRateCount;

template <class T>
struct IsOptional : std::false_type {};
template <class T>
struct IsOptional<std::optional<T>> : std::true_type {};

/// Calls `use` with each field of an asset except identity, place and kind, which are in the head.
template <class Asset, class Use>
void fieldsOfAsset(Asset& asset, Use use) {
    std::apply([&](const auto& /*id*/, const auto& /*url*/, const auto& /*kind*/,
                   const auto&... field) { (use(asset.*field.member), ...); },
               recordFields<MediaAsset>());
}

template <class Record, class Use>
void fieldsOf(Record& record, Use use) {
    using Plain = std::remove_const_t<Record>;
    if constexpr (std::is_same_v<Plain, OffspeedConfidence>) {
        auto& [kind, isOffspeed, factor] = record;
        use(kind), use(isOffspeed), use(factor);
    } else {
        std::apply([&](const auto&... field) { (use(record.*field.member), ...); }, recordFields<Plain>());
    }
}

template <class T>
void put(std::string& out, const T& value) {
    if constexpr (IsOptional<T>::value) {
        appendPlain(out, value.has_value());
        if (value) put(out, *value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        appendText(out, value);
    } else if constexpr (std::is_same_v<T, Date>) {
        appendPlain(out, static_cast<std::int64_t>(value.time_since_epoch().count()));
    } else if constexpr (std::is_enum_v<T>) {
        appendPlain(out, static_cast<std::uint8_t>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        appendPlain(out, value);
    } else if constexpr (std::is_same_v<T, std::vector<IXMLTrack>>) {
        appendPlain(out, static_cast<std::uint32_t>(value.size()));
        for (const IXMLTrack& track : value) put(out, track);
    } else {
        fieldsOf(value, [&out](const auto& field) { put(out, field); });
    }
}

template <class T>
void take(PackedReader& in, T& value) {
    if constexpr (IsOptional<T>::value) {
        if (in.plain<bool>()) take(in, value.emplace());
    } else if constexpr (std::is_same_v<T, std::string>) {
        value = in.text();
    } else if constexpr (std::is_same_v<T, Date>) {
        value = Date(Date::duration(in.plain<std::int64_t>()));
    } else if constexpr (std::is_enum_v<T>) {
        const auto number = in.plain<std::uint8_t>();
        if (number < caseCount<T>)
            value = static_cast<T>(number);
        else
            in.fail();
    } else if constexpr (std::is_arithmetic_v<T>) {
        value = in.plain<T>();
    } else if constexpr (std::is_same_v<T, std::vector<IXMLTrack>>) {
        const auto count = in.plain<std::uint32_t>();
        // Each element takes at least eight bytes, so a wrong count cannot request more memory than the
        // record justifies.
        constexpr std::size_t leastBytes = 8;
        if (count > in.left() / leastBytes) return in.fail();
        value.resize(count);
        for (IXMLTrack& track : value) take(in, track);
    } else {
        fieldsOf(value, [&in](auto& field) { take(in, field); });
    }
}

} // namespace

std::string ProbeRecord::bytes() const {
    std::string out(sizeof(std::uint64_t), '\0');
    appendPlain(out, readerVersion);
    appendPlain(out, modificationSinceReference);
    appendPlain(out, size);
    appendPlain(out, static_cast<std::uint8_t>(kind));
    out.append(reinterpret_cast<const char*>(id.bytes.data()), id.bytes.size());
    appendText(out, path);
    appendText(out, body);
    const std::uint64_t checksum = quickHash(std::string_view(out).substr(sizeof checksum));
    std::memcpy(out.data(), &checksum, sizeof checksum);
    return out;
}

std::optional<ProbeRecord> ProbeRecord::fromBytes(std::string_view bytes) {
    PackedReader in(bytes);
    const auto checksum = in.plain<std::uint64_t>();
    if (in.hasFailed() || checksum != quickHash(bytes.substr(sizeof checksum))) return std::nullopt;
    ProbeRecord record;
    record.readerVersion = in.plain<std::uint32_t>();
    record.modificationSinceReference = in.plain<double>();
    record.size = in.plain<std::int64_t>();
    take(in, record.kind);
    const std::string_view id = in.bytes(record.id.bytes.size());
    std::memcpy(record.id.bytes.data(), id.data(), id.size());
    record.path = in.text();
    record.body = in.text();
    return in.hasFailed() ? std::nullopt : std::optional(record);
}

bool ProbeRecord::isOf(const platform::FileAttributes& file) const {
    return std::abs(file.modificationSinceReference - modificationSinceReference) < dateTolerance &&
           file.size == size;
}

std::string encodedAsset(const MediaAsset& asset) {
    std::string out;
    fieldsOfAsset(asset, [&out](const auto& field) { put(out, field); });
    return out;
}

std::optional<MediaAsset> decodedAsset(const ProbeRecord& record) {
    std::optional<MediaAsset> asset(std::in_place, record.id, FileURL(), record.kind);
    asset->url.path = record.path;
    PackedReader in(record.body);
    fieldsOfAsset(*asset, [&in](auto& field) { take(in, field); });
    if (in.hasFailed() || in.left() > 0) asset.reset();
    return asset;
}

} // namespace orvane
