#pragma once

#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <string>

/// Settings of the program, independent of the open work.
namespace orvane::settings {

inline const Declared<double> cachesLimitGB{
    "caches.limitGB",
    20.0,
    family::caches,
    "10^9 bytes that rendered sound may take; the oldest is removed first",
    {.range = SettingDescription::Range{0, 1'000'000},
     .label = "Rendered sound may take",
     .hint = "The oldest is removed first.",
     .unit = " GB",
     .decimals = 1}};

inline const Declared<std::string> calibInputAudio{
    "calib.inputAudioURL",
    "",
    family::calibration,
    "path of the recording that a calibration is made with; empty: made noise",
    {.label = "Recording",
     .hint = "The loudest minute of it is what Final Cut Pro is measured with; without one, made noise."}};

} // namespace orvane::settings
