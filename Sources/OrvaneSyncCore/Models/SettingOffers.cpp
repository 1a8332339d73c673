#include "OrvaneSyncCore/Models/SettingOffers.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SmartAudioConfig.h"

#include <array>
#include <cstddef>
#include <string>
#include <utility>

namespace orvane::settings {

namespace {

template <std::size_t count>
offers::Offers offersOf(const std::array<SmartAudioChoice, count>& numbers) {
    offers::Offers all;
    for (const SmartAudioChoice& one : numbers) all.push_back({std::string(one.text), one.value});
    return all;
}

} // namespace

offers::Offers offers::frameRates() {
    Offers all{{"Automatic (the rate of most clips)", 0.0}};
    for (const auto& [text, rate] : {std::pair{"23.976 fps", 23.976},
                                     {"24 fps", 24.0},
                                     {"25 fps", 25.0},
                                     {"29.97 fps", 29.97},
                                     {"30 fps", 30.0},
                                     {"47.952 fps", 47.952},
                                     {"48 fps", 48.0},
                                     {"50 fps", 50.0},
                                     {"59.94 fps", 59.94},
                                     {"60 fps", 60.0}})
        all.push_back({text, rate});
    return all;
}

offers::Offers offers::aspectRatios() {
    return {{"16:9 (HD / UHD)", "16:9"},          {"4:3 (TV classic)", "4:3"},
            {"2:1 (Univisium)", "2:1"},           {"1:1 (Square)", "1:1"},
            {"2.35:1 (Cinemascope)", "2.35:1"},   {"2.39:1 (DCI scope)", "2.39:1"},
            {"9:16 (Vertical / Social)", "9:16"}, {"Custom pixels…", "custom"}};
}

offers::Offers offers::timecodeChannels() {
    constexpr int channels = 16;
    Offers all{{"The first that carries timecode", everyTimecodeChannel}};
    for (int channel = 0; channel < channels; ++channel)
        all.push_back({"Channel " + std::to_string(channel + 1), channel});
    return all;
}

offers::Offers offers::humFrequencies() { return offersOf(humFrequencyChoices); }
offers::Offers offers::projectLoudness() { return offersOf(targetLUFSChoices); }

offers::Offers offers::loudnessTargets() {
    Offers all = offersOf(loudnessTargetChoices);
    all.push_back({"Off (levels stay as they are)", 0.0});
    return all;
}

/// In Final Cut Pro roles have the names under which they are stored.
offers::Offers offers::atmoRoles() {
    Offers all;
    for (const char* role :
         {"effects.atmosphere", "effects.ambience", "effects.background", "effects.room-tone"})
        all.push_back({role, role});
    return all;
}

} // namespace orvane::settings
