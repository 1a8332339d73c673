#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "OrvaneSyncCore/Models/SettingOffers.h"
#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <string>

/// The document's name, its clips and their names, what is matched, its frame size.
namespace orvane::settings {

inline constexpr SettingDescription::Range pixels{1, 16384};

inline const Declared<std::string> eventName{"eventName",
                                             "Synced",
                                             family::projectAndNaming,
                                             "name of the event that the clips go to",
                                             {.label = "Event name",
                                              .hint = "The event in Final Cut Pro that the clips go to.",
                                              .changed = {mostChanged::names, 1}}};
inline const Declared<bool> generateSyncClips{"generateSyncClips",
                                              true,
                                              family::projectAndNaming,
                                              "put the single synchronized clips into the document",
                                              {.label = "Synchronized clips",
                                               .hint = "Every clip with its sound, as a clip of its own.",
                                               .changed = {mostChanged::eventsAndClips, 5}}};
inline const Declared<bool> generateMulticam{"generateMulticam",
                                             true,
                                             family::projectAndNaming,
                                             "join cameras that rolled together into multicam clips",
                                             {.label = "Multicam clips",
                                              .hint = "Cameras that rolled together become one clip.",
                                              .changed = {mostChanged::multicam, 1}}};
inline const Declared<double> targetFrameRate{
    "project.targetFrameRate",
    0.0,
    family::projectAndNaming,
    "frames per second of the project; 0 takes the rate of most clips",
    {.range = SettingDescription::Range{0, 1000},
     .label = "Frame rate of the project",
     .offered = offers::frameRates,
     .changed = {mostChanged::picture, 1}}};
inline const Declared<ClipNamingSource> clipNamingSource{
    "clipNamingSource",
    ClipNamingSource::sceneTake,
    family::projectAndNaming,
    "what a clip is named after",
    {.label = "Named after", .changed = {mostChanged::names, 2}}};
inline const Declared<std::string> customNamingPattern{
    "customNamingPattern",
    "{scene}-{take}",
    family::projectAndNaming,
    "the name's pattern when clips are named by a custom one",
    {.label = "Pattern",
     .hint = "Counts where clips are named by “Custom”.",
     .changed = {mostChanged::names, 3}}};
inline const Declared<std::string> namingSeparator{
    "namingSeparator",
    "-",
    family::projectAndNaming,
    "is put between scene and take in names",
    {.label = "Separator", .hint = "Put between scene and take.", .changed = {mostChanged::names, 4}}};

inline const Declared<MatchingDays> matchingDays{
    "matching.days",
    MatchingDays::automatic,
    family::matching,
    "days whose recordings a clip may get; auto: its own, and of clocks a day off",
    {.label = "Days whose recordings a clip may get"}};

inline const Declared<VideoResolutionMode> videoResolution{
    "videoResolution",
    VideoResolutionMode::useVideoFrameSize,
    family::frameSize,
    "frame size of the document: that of the clips or the alternate one",
    {.label = "Frame size", .changed = {mostChanged::picture, 3}}};
inline const Declared<int> alternateWidth{"alternateWidth",
                                          1920,
                                          family::frameSize,
                                          "pixels, where the aspect ratio is custom",
                                          {.range = pixels, .label = "Width", .unit = " px"}};
inline const Declared<int> alternateHeight{"alternateHeight",
                                           1080,
                                           family::frameSize,
                                           "pixels, where the aspect ratio is custom",
                                           {.range = pixels, .label = "Height", .unit = " px"}};
inline const Declared<std::string> aspectRatio{
    "container.aspectRatio",
    "16:9",
    aspectRatioIdentifiers,
    family::frameSize,
    "shape of the alternate frame",
    {.label = "Shape of the alternate frame",
     .hint = "Its width is that of the clips; “Custom pixels…” takes the two below.",
     .offered = offers::aspectRatios,
     .changed = {mostChanged::picture, 4}}};
inline const Declared<SpatialConformType> spatialConform{
    "spatialConform",
    SpatialConformType::fill,
    family::frameSize,
    "how pictures of another shape fill the frame",
    {.label = "Pictures of another shape", .changed = {mostChanged::picture, 5}}};
inline const Declared<bool> overrideAnamorphic{"overrideAnamorphic", false, family::frameSize,
                                               "reserved; without effect"};
inline const Declared<TrimMode> trimMode{
    "trimMode",
    TrimMode::commonDuration,
    family::frameSize,
    "common: the shorter length from the picture's start; overlap: where both are",
    {.label = "Length of the clips", .changed = {mostChanged::picture, 2}}};

} // namespace orvane::settings
