#pragma once

#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <string>

/// Clips whose sensor ran at another rate than the project.
namespace orvane::settings {

inline const Declared<bool> generateNativeMOS{
    "offspeed.generateNativeMOS",
    false,
    family::offspeed,
    "also a clip without sound at the sensor's rate for off-speed material",
    {.label = "Also make one of each off-speed clip", .changed = {mostChanged::offspeed, 1}}};
inline const Declared<std::string> nativeMOSSuffix{"offspeed.suffix",
                                                   "[{fps} FPS]",
                                                   family::offspeed,
                                                   "is appended to its name; {fps} is the sensor's rate",
                                                   {.label = "Behind its name",
                                                    .hint = "{fps} is the sensor's rate.",
                                                    .changed = {mostChanged::offspeed, 2}}};
inline const Declared<bool> nativeMOSSeparateEvent{
    "offspeed.separateEvent",
    false,
    family::offspeed,
    "those clips go into an event of their own",
    {.label = "In an event of their own", .changed = {mostChanged::offspeed, 3}}};
inline const Declared<std::string> nativeMOSEventName{"offspeed.eventName",
                                                      "Native MOS",
                                                      family::offspeed,
                                                      "name of that event",
                                                      {.label = "Name of that event"}};
inline const Declared<bool> generateProjectRate{
    "offspeed.generateProjectRate",
    false,
    family::offspeed,
    "also a clip conformed to the project's rate for off-speed material",
    {.label = "Also make one of each off-speed clip", .changed = {mostChanged::offspeed, 4}}};
inline const Declared<std::string> projectRateSuffix{"offspeed.projectRateSuffix",
                                                     "{fps}fps",
                                                     family::offspeed,
                                                     "is appended to its name; {fps} is the project's rate",
                                                     {.label = "Behind its name",
                                                      .hint = "{fps} is the project's rate.",
                                                      .changed = {mostChanged::offspeed, 5}}};
inline const Declared<bool> projectRateSeparateEvent{
    "offspeed.projectRateSeparateEvent",
    false,
    family::offspeed,
    "those clips go into an event of their own",
    {.label = "In an event of their own", .changed = {mostChanged::offspeed, 6}}};
inline const Declared<std::string> projectRateEventName{"offspeed.projectRateEventName",
                                                        "Project Rate",
                                                        family::offspeed,
                                                        "name of that event",
                                                        {.label = "Name of that event"}};
inline const Declared<bool> wrapNativeMOSInSyncClip{"offspeed.wrapNativeMOSInSyncClip",
                                                    false,
                                                    family::offspeed,
                                                    "the clips without sound become synchronized clips too",
                                                    {.label = "As a synchronized clip"}};
inline const Declared<bool> offspeedAutoKeyword{"offspeed.autoKeyword",
                                                true,
                                                family::offspeed,
                                                "mark off-speed clips with keywords",
                                                {.isRegistered = true,
                                                 .label = "Mark off-speed clips",
                                                 .hint = "With “Offspeed” and the rate of the sensor.",
                                                 .changed = {mostChanged::offspeed, 7}}};

} // namespace orvane::settings
