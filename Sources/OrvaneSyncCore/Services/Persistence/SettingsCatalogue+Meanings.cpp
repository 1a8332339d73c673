#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include <algorithm>
#include <array>

namespace orvane {

namespace {

struct Meaning {
    std::string_view key;
    std::string_view text; ///< one line, at most 80 characters
};

// In the order of the catalogue.
constexpr std::array<Meaning, 74> table{{
    {"eventName", "name of the event that the clips go to"},
    {"generateSyncClips", "put the single synchronized clips into the document"},
    {"generateMulticam", "join cameras that rolled together into multicam clips"},
    {"project.targetFrameRate", "frames per second of the project; 0 takes the rate of most clips"},
    {"clipNamingSource", "what a clip is named after"},
    {"customNamingPattern", "the name's pattern when clips are named by a custom one"},
    {"namingSeparator", "stands between scene and take in names"},
    {"videoResolution", "frame size of the document: that of the clips or the alternate one"},
    {"alternateWidth", "pixels, where the aspect ratio is custom"},
    {"alternateHeight", "pixels, where the aspect ratio is custom"},
    {"container.aspectRatio", "shape of the alternate frame"},
    {"spatialConform", "how pictures of another shape fill the frame"},
    {"overrideAnamorphic", "reserved; without effect"},
    {"trimMode", "length of a clip: where picture and sound overlap, the picture, or the longest"},
    {"notes.source", "whose notes the Notes field takes"},
    {"notes.videoPrefix", "stands before the camera's notes"},
    {"notes.audioPrefix", "stands before the sound recordist's notes"},
    {"multicam.codec", "render format of multicam clips"},
    {"export.wrapMOSInSyncClip", "a clip without sound becomes a synchronized clip too"},
    {"export.splitEventsByScene", "one event a scene"},
    {"export.eventNamePattern", "name of a scene's event; {scene:3} is the scene with three digits"},
    {"export.experimentalVolumeKeyframes", "an older name; counts where export.volumeKeyframes has no value"},
    {"export.volumeKeyframes", "volumes of the channels follow Smart Audio's choice over time"},
    {"export.generateRawMediaEvent", "add an event that holds every source file"},
    {"export.rawMediaEventName", "name of that event"},
    {"offspeed.generateNativeMOS", "also a silent clip at the sensor's rate for off-speed material"},
    {"offspeed.suffix", "stands behind its name; {fps} is the sensor's rate"},
    {"offspeed.separateEvent", "those clips go into an event of their own"},
    {"offspeed.eventName", "name of that event"},
    {"offspeed.generateProjectRate", "also a clip conformed to the project's rate for off-speed material"},
    {"offspeed.projectRateSuffix", "stands behind its name; {fps} is the project's rate"},
    {"offspeed.projectRateSeparateEvent", "those clips go into an event of their own"},
    {"offspeed.projectRateEventName", "name of that event"},
    {"offspeed.wrapNativeMOSInSyncClip", "the silent clips become synchronized clips too"},
    {"offspeed.autoKeyword", "mark off-speed clips with keywords"},
    {"ale.matchField", "match a report's lines by the clip's name or by one of its columns"},
    {"ale.matchColumn", "that column"},
    {"lockit.fieldMapping.v1", "where metadata fields go in Final Cut Pro"},
    {"lockit.fieldMapping.customKeys.v1", "metadata keys of your own"},
    {"audioBaseRole", "main role of all recorded sound"},
    {"defaultSubrole1", "role of track 1 where the recorder names none"},
    {"defaultSubrole2", "role of track 2"},
    {"defaultSubrole3", "role of track 3"},
    {"defaultSubrole4", "role of track 4"},
    {"defaultSubrole5", "role of track 5"},
    {"defaultSubrole6", "role of track 6"},
    {"defaultSubrole7", "role of track 7"},
    {"defaultSubrole8", "role of track 8"},
    {"useIXMLTrackNames", "name tracks as the recorder does"},
    {"smartAudioMode", "how Smart Audio chooses microphones; unset: standard in sync, none in scan"},
    {"bestChannelMode", "kept for other programs; no choice depends on it"},
    {"smartAudio.voiceIso", "voice isolation that is recommended, 0 to 1 (mode custom)"},
    {"smartAudio.voiceIsoSNR", "dB of SNR below which it is recommended; mode custom always does"},
    {"smartAudio.loudness", "loudness correction that is recommended, 0 to 1 (mode custom)"},
    {"smartAudio.loudnessUniformity", "uniformity of that correction, 0 to 1 (mode custom)"},
    {"smartAudio.humFreq", "mains hum in Hz, 50 or 60 (mode custom)"},
    {"smartAudio.autoHum", "recommend hum removal where hum is heard (mode custom)"},
    {"smartAudio.aggressiveness", "kept for other programs; no choice depends on it"},
    {"smartAudio.blockMode", "how short a stretch may be"},
    {"smartAudio.loudnessTargetDB",
     "dBFS that the speech peaks of a stretch are brought to; 0 leaves levels alone"},
    {"smartAudio.targetLUFS", "LUFS that the master gain aims at, where one clip is analysed; not in sync"},
    {"smartAudio.preset", "the project's look"},
    {"smartAudio.banditEnabled", "separate speech, music and effects before choosing"},
    {"playback.applySmartAudio", "hear the choice while playing"},
    {"playback.audioScrubbing", "sound while scrubbing"},
    {"globalAudioOffset.frames", "frames that all sound is moved by, later if positive"},
    {"globalAudioOffset.startMode", "from which clip on"},
    {"globalAudioOffset.startFromFilename", "name of the first such clip"},
    {"globalAudioOffset.startFromTC", "timecode of the first such clip"},
    {"ltc.enabled", "read timecode from a sound track where a file has no other"},
    {"ltc.channelIndex",
     "its channel, counted from 0; -1: the first that carries timecode"},
    {"atmo.duration", "seconds of room tone; 0 makes it 180"},
    {"atmo.audioRole", "role of the room tone"},
    {"atmo.includeInExport", "put the room tone into the document"},
}};

} // namespace

std::string_view SettingsCatalogue::meaning(std::string_view key) {
    const auto found = std::ranges::find(table, key, &Meaning::key);
    return found == table.end() ? std::string_view() : found->text;
}

} // namespace orvane
