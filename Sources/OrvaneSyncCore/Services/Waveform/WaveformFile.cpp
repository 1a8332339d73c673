#include "OrvaneSyncCore/Services/Waveform/WaveformFile.h"

#include "OrvaneSyncCore/Utilities/PackedBytes.h"
#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr std::string_view magic = "ORVWAVE1"; ///< the last digit is the number of the layout

void append(std::string& out, const std::vector<float>& values) {
    out.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(float));
}

template <class Number>
bool isPossible(Number value) {
    return std::isfinite(value) && value >= 0;
}

std::vector<float> takeLevels(PackedReader& in, std::size_t count) {
    if (count > in.left() / sizeof(float)) {
        in.fail();
        return {};
    }
    std::vector<float> values(count);
    const std::string_view bytes = in.bytes(count * sizeof(float));
    if (!bytes.empty()) std::memcpy(values.data(), bytes.data(), bytes.size());
    if (!std::ranges::all_of(values, isPossible<float>)) in.fail();
    return values;
}

} // namespace

std::string waveformBytes(const std::string& key, const WaveformResult& waveform) {
    std::string body;
    appendText(body, key);
    appendPlain(body, waveform.binsPerSecond);
    appendPlain(body, waveform.durationSeconds);
    appendPlain(body, static_cast<std::uint32_t>(waveform.peaks.size()));
    appendPlain(body, static_cast<std::uint32_t>(waveform.peaksPerChannel.size()));
    append(body, waveform.peaks);
    append(body, waveform.rms);
    for (const auto& channel : waveform.peaksPerChannel) append(body, channel);
    for (const auto& channel : waveform.rmsPerChannel) append(body, channel);
    std::string out(magic);
    appendPlain(out, quickHash(body));
    return out + body;
}

std::optional<WaveformResult> waveformFromBytes(std::string_view bytes, std::string_view key) {
    PackedReader in(bytes);
    if (in.bytes(magic.size()) != magic) return std::nullopt;
    const auto hash = in.plain<std::uint64_t>();
    if (in.hasFailed() || quickHash(bytes.substr(bytes.size() - in.left())) != hash || in.text() != key)
        return std::nullopt;
    WaveformResult waveform;
    waveform.binsPerSecond = in.plain<double>();
    waveform.durationSeconds = in.plain<double>();
    if (!isPossible(waveform.binsPerSecond) || !isPossible(waveform.durationSeconds)) return std::nullopt;
    const auto bins = in.plain<std::uint32_t>(), channels = in.plain<std::uint32_t>();
    if (channels > WaveformResult::mostChannels) return std::nullopt;
    waveform.peaks = takeLevels(in, bins);
    waveform.rms = takeLevels(in, bins);
    for (auto* lists : {&waveform.peaksPerChannel, &waveform.rmsPerChannel})
        for (std::uint32_t i = 0; i < channels; ++i) lists->push_back(takeLevels(in, bins));
    return in.hasFailed() || in.left() > 0 ? std::nullopt : std::optional(std::move(waveform));
}

} // namespace orvane
