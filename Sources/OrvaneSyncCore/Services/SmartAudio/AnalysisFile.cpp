#include "OrvaneSyncCore/Services/SmartAudio/AnalysisFile.h"

#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <type_traits>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr std::string_view magic = "ORVANAL1"; ///< the last digit is the number of the layout

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};
template <class T>
struct IsMaybe : std::false_type {};
template <class T>
struct IsMaybe<std::optional<T>> : std::true_type {};

/// Calls `use` with each member of a record, in a fixed order. Does not compile if a member is missing.
template <class Record, class Use>
void membersOf(Record& record, Use use) {
    using Plain = std::remove_const_t<Record>;
    const auto each = [&use](auto&... member) { (use(member), ...); };
    if constexpr (std::is_same_v<Plain, StoredAnalysis>) {
        auto& [a, b, c] = record;
        each(a, b, c);
    } else if constexpr (std::is_same_v<Plain, SmartAudioTerms>) {
        auto& [a, b, c] = record;
        each(a, b, c);
    } else if constexpr (std::is_same_v<Plain, SmartAudioConfig>) {
        auto& [a, b, c, d, e, f, g] = record;
        each(a, b, c, d, e, f, g);
    } else if constexpr (std::is_same_v<Plain, SmartAudioBlockSettings>) {
        auto& [a, b, c, d, e, f, g, h] = record;
        each(a, b, c, d, e, f, g, h);
    } else if constexpr (std::is_same_v<Plain, SmartAudioResult>) {
        auto& [a, b, c, d, e, f, g, h, i, j, k] = record;
        each(a, b, c, d, e, f, g, h, i, j, k);
    } else if constexpr (std::is_same_v<Plain, TrackAdjustment>) {
        auto& [a, b, c, d, e, f, g, h, i, j] = record;
        each(a, b, c, d, e, f, g, h, i, j);
    } else if constexpr (std::is_same_v<Plain, WindowedBestSegment>) {
        auto& [a, b, c] = record;
        each(a, b, c);
    } else if constexpr (std::is_same_v<Plain, BlockDecision>) {
        auto& [a, b, c, d, e, f, g, h] = record;
        each(a, b, c, d, e, f, g, h);
    } else if constexpr (std::is_same_v<Plain, ChannelClassification>) {
        auto& [a, b, c, d, e, f] = record;
        each(a, b, c, d, e, f);
    } else if constexpr (std::is_same_v<Plain, StemMetrics>) {
        auto& [a, b, c, d] = record;
        each(a, b, c, d);
    } else {
        static_assert(std::is_same_v<Plain, IncompleteFile>);
        auto& [a, b, c] = record;
        each(a, b, c);
    }
}

template <class T>
void put(std::string& out, const T& value) {
    if constexpr (IsMaybe<T>::value) {
        appendPlain(out, value.has_value());
        if (value) put(out, *value);
    } else if constexpr (IsList<T>::value) {
        appendPlain(out, static_cast<std::uint32_t>(value.size()));
        for (const auto& one : value) put(out, one);
    } else if constexpr (std::is_same_v<T, std::string>) {
        appendText(out, value);
    } else if constexpr (std::is_enum_v<T>) {
        appendPlain(out, static_cast<std::uint8_t>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        appendPlain(out, value);
    } else {
        membersOf(value, [&out](const auto& member) { put(out, member); });
    }
}

template <class T>
void take(PackedReader& in, T& value) {
    if constexpr (IsMaybe<T>::value) {
        if (in.plain<bool>()) take(in, value.emplace());
    } else if constexpr (IsList<T>::value) {
        const auto count = in.plain<std::uint32_t>();
        // An element takes at least four bytes, so a wrong count requests no more memory than the file
        // justifies.
        constexpr std::size_t leastBytes = 4;
        if (count > in.left() / leastBytes) return in.fail();
        value.resize(count);
        for (auto& one : value) take(in, one);
    } else if constexpr (std::is_same_v<T, std::string>) {
        value = in.text();
    } else if constexpr (std::is_enum_v<T>) {
        const auto number = in.plain<std::uint8_t>();
        if (number < RawValues<T>::texts.size())
            value = static_cast<T>(number);
        else
            in.fail();
    } else if constexpr (std::is_arithmetic_v<T>) {
        value = in.plain<T>();
    } else {
        membersOf(value, [&in](auto& member) { take(in, member); });
    }
}

} // namespace

std::string analysisBytes(std::string_view key, std::uint32_t version, const StoredAnalysis& analysis) {
    std::string body;
    appendText(body, key);
    appendPlain(body, version);
    put(body, analysis);
    std::string out(magic);
    appendPlain(out, quickHash(body));
    return out + body;
}

std::optional<StoredAnalysis> analysisFromBytes(std::string_view bytes, std::string_view key,
                                                std::uint32_t version) {
    PackedReader in(bytes);
    if (in.bytes(magic.size()) != magic) return std::nullopt;
    const auto hash = in.plain<std::uint64_t>();
    if (in.hasFailed() || quickHash(bytes.substr(bytes.size() - in.left())) != hash || in.text() != key ||
        in.plain<std::uint32_t>() != version)
        return std::nullopt;
    StoredAnalysis analysis;
    take(in, analysis);
    return in.hasFailed() || in.left() > 0 ? std::nullopt : std::optional(std::move(analysis));
}

} // namespace orvane
