#include "OrvaneSyncCore/Services/Playback/AudioLevels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace orvane {

namespace {

constexpr float lowest = 1e-10F;  // linear
constexpr float meterSpanDB = 60; // below full scale

float decibels(float linear) { return 20 * std::log10(std::max(linear, lowest)); }
float onMeter(float dB) { return std::clamp((dB + meterSpanDB) / meterSpanDB, 0.0F, 1.0F); }

constexpr std::array<std::string_view, 1> mono{"M"};
constexpr std::array<std::string_view, 2> stereo{"L", "R"};
constexpr std::array<std::string_view, 6> surround{"L", "R", "C", "LFE", "Ls", "Rs"};
constexpr std::array<std::string_view, 8> wideSurround{"L", "R", "C", "LFE", "Lss", "Rss", "Lrs", "Rrs"};

} // namespace

ChannelLevel ChannelLevel::measured(int channel, platform::ChannelPeak level) {
    ChannelLevel shown;
    shown.channel = channel;
    shown.peakDB = decibels(level.peak);
    shown.rmsDB = decibels(level.rms);
    shown.peak = onMeter(shown.peakDB);
    shown.rms = onMeter(shown.rmsDB);
    return shown;
}

std::string AudioLevels::channelName(int index, int count) {
    const auto named = [&]() -> std::span<const std::string_view> {
        switch (count) {
        case 1:
            return mono;
        case 2:
            return stereo;
        case 6:
            return surround;
        case 8:
            return wideSurround;
        default:
            return {};
        }
    }();
    if (index >= 0 && static_cast<std::size_t>(index) < named.size())
        return std::string(named[static_cast<std::size_t>(index)]);
    return "CH" + std::to_string(index + 1);
}

void smooth(std::vector<ChannelLevel>& shown, std::span<const platform::ChannelPeak> measured,
            float smoothing) {
    for (std::size_t i = 0; i < measured.size(); ++i) {
        const ChannelLevel fresh = ChannelLevel::measured(static_cast<int>(i), measured[i]);
        if (i >= shown.size()) {
            shown.push_back(fresh);
            continue;
        }
        const auto pass = [&](float ChannelLevel::*value) {
            shown[i].*value = shown[i].*value * smoothing + fresh.*value * (1 - smoothing);
        };
        pass(&ChannelLevel::peak);
        pass(&ChannelLevel::rms);
        pass(&ChannelLevel::peakDB);
        pass(&ChannelLevel::rmsDB);
    }
}

} // namespace orvane
