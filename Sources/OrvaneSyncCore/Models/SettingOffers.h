#pragma once

#include "Platform/Setting.h"

#include <vector>

/// The values that the settings screen suggests for settings which also accept others. Pure; any thread.
namespace orvane::settings::offers {

using Offers = std::vector<platform::SettingDescription::Offer>;

Offers frameRates();
Offers aspectRatios();
Offers timecodeChannels();
Offers humFrequencies();
Offers projectLoudness();
Offers loudnessTargets();
Offers atmoRoles();

} // namespace orvane::settings::offers
