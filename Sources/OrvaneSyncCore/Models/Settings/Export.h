#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <string>

/// The content of the document, and its events.
namespace orvane::settings {

inline const Declared<NotesSource> notesSource{"notes.source",
                                               NotesSource::both,
                                               family::notes,
                                               "whose notes the Notes field takes",
                                               {.label = "Notes of a clip",
                                                .hint = "Whose notes the Notes field in Final Cut Pro takes.",
                                                .changed = {mostChanged::names, 5}}};
inline const Declared<std::string> notesVideoPrefix{"notes.videoPrefix",
                                                    "V:",
                                                    family::notes,
                                                    "is put before the camera's notes",
                                                    {.label = "Before the camera's notes"}};
inline const Declared<std::string> notesAudioPrefix{"notes.audioPrefix",
                                                    "A:",
                                                    family::notes,
                                                    "is put before the sound recordist's notes",
                                                    {.label = "Before the sound recordist's notes"}};

inline const Declared<MulticamCodec> multicamCodec{"multicam.codec",
                                                   MulticamCodec::automatic,
                                                   family::multicam,
                                                   "render format of multicam clips",
                                                   {.label = "Render format",
                                                    .hint = "What Final Cut Pro renders a multicam clip to.",
                                                    .changed = {mostChanged::multicam, 2}}};

inline const Declared<bool> wrapMOSInSyncClip{
    "export.wrapMOSInSyncClip",
    true,
    family::exporting,
    "a clip without sound becomes a synchronized clip; else it is source media only",
    {.isRegistered = true,
     .label = "Clips without sound (MOS) become synchronized clips too",
     .hint = "Off leaves them out of the clips’ events: they are only in the event with the source media.",
     .changed = {mostChanged::eventsAndClips, 4}}};
inline const Declared<bool> splitEventsByScene{
    "export.splitEventsByScene",
    false,
    family::exporting,
    "one event a scene",
    {.label = "One event a scene", .changed = {mostChanged::eventsAndClips, 1}}};
inline const Declared<std::string> eventNamePattern{
    "export.eventNamePattern",
    "{eventName} {scene:3}",
    family::exporting,
    "name of a scene's event; {scene:3} is the scene with three digits",
    {.label = "Name of a scene's event",
     .hint = "{eventName} is the event's name, {scene} the scene, {scene:3} the scene with three digits.",
     .changed = {mostChanged::eventsAndClips, 2}}};
inline const Declared<bool> experimentalVolumeKeyframes{
    "export.experimentalVolumeKeyframes", false, family::exporting,
    "an older name; counts where export.volumeKeyframes has no value"};
inline const Declared<bool> volumeKeyframes{
    "export.volumeKeyframes",
    false,
    family::exporting,
    "volumes of the channels follow Smart Audio's choice over time",
    {.label = "Volume keyframes",
     .hint = "The volumes of the channels follow Smart Audio's choice over time.",
     .changed = {mostChanged::sound, 6}}};
inline const Declared<bool> generateRawMediaEvent{"export.generateRawMediaEvent",
                                                  true,
                                                  family::exporting,
                                                  "add an event that holds every source file",
                                                  {.isRegistered = true,
                                                   .label = "Event with the source media",
                                                   .hint = "One more event that holds every source file.",
                                                   .changed = {mostChanged::eventsAndClips, 3}}};
inline const Declared<std::string> rawMediaEventName{"export.rawMediaEventName",
                                                     "Source Media",
                                                     family::exporting,
                                                     "name of that event",
                                                     {.label = "Name of that event"}};

} // namespace orvane::settings
