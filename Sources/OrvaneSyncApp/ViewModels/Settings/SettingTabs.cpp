#include "OrvaneSyncApp/ViewModels/Settings/PatternDoubts.h"
#include "OrvaneSyncApp/ViewModels/Settings/SettingRows.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "Platform/SettingsStore.h"

#include <stdexcept>
#include <utility>

namespace orvane {

namespace {

using Control = SettingRow::Control;
using platform::SettingsStore;
using Choices = std::vector<SettingChoice>;

/// A row and what few rows have.
class Row {
  public:
    Row(const SettingDescription& setting, std::string label, std::string hint = {})
        : row_{setting, controlOf(setting), std::move(label), std::move(hint)} {
        if (const auto range = setting.details.range; range && range->highest == 1)
            row_.control = Control::amount;
    }
    Row& offering(Choices choices) {
        row_.control = Control::choice;
        row_.choices = std::move(choices);
        return *this;
    }
    /// The words of an enumeration's cases, in their order.
    Row& named(const std::vector<std::string>& words) {
        Choices all;
        for (std::size_t i = 0; i < words.size(); ++i)
            all.push_back({words[i], row_.setting.get().choices[i]});
        return offering(std::move(all));
    }
    Row& in(std::string unit, int decimals = 0) {
        row_.unit = std::move(unit);
        row_.decimals = decimals;
        return *this;
    }
    Row& when(bool (*applies)(const SettingsStore&)) {
        row_.applies = applies;
        return *this;
    }
    Row& doubting(std::string (*doubt)(std::string_view)) {
        row_.doubt = doubt;
        return *this;
    }
    Row& as(Control control) {
        row_.control = control;
        return *this;
    }
    operator SettingRow() const { return row_; } // it is one

  private:
    static Control controlOf(const SettingDescription& setting) {
        switch (setting.kind) {
        case SettingDescription::Kind::boolean:
            return Control::toggle;
        case SettingDescription::Kind::integer:
        case SettingDescription::Kind::number:
            return Control::number;
        default:
            return Control::line;
        }
    }

    SettingRow row_;
};

template <class E>
std::vector<std::string> words(std::string (*text)(E)) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < RawValues<E>::texts.size(); ++i) all.push_back(text(static_cast<E>(i)));
    return all;
}
template <class E>
std::vector<std::string> words(std::string_view (*text)(E)) {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < RawValues<E>::texts.size(); ++i) all.emplace_back(text(static_cast<E>(i)));
    return all;
}

template <std::size_t count>
Choices numbers(const std::array<SmartAudioChoice, count>& from) {
    Choices all;
    for (const SmartAudioChoice& one : from) all.push_back({std::string(one.text), one.value});
    return all;
}

/// Whether a switch is on.
template <const auto& setting>
bool isOn(const SettingsStore& store) {
    return store.get(setting);
}
template <const auto& setting, auto value>
bool is(const SettingsStore& store) {
    return store.get(setting) == value;
}

Choices frameRates() {
    Choices all{{"Automatic (the rate of most clips)", 0.0}};
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

Choices aspectRatios() {
    return {{"16:9 (HD / UHD)", "16:9"},          {"4:3 (TV classic)", "4:3"},
            {"2:1 (Univisium)", "2:1"},           {"1:1 (Square)", "1:1"},
            {"2.35:1 (Cinemascope)", "2.35:1"},   {"2.39:1 (DCI scope)", "2.39:1"},
            {"9:16 (Vertical / Social)", "9:16"}, {"Custom pixels…", "custom"}};
}

Choices timecodeChannels() {
    constexpr int channels = 16;
    Choices all{{"The first that carries timecode", settings::everyTimecodeChannel}};
    for (int channel = 0; channel < channels; ++channel)
        all.push_back({"Channel " + std::to_string(channel + 1), channel});
    return all;
}

Choices blockModes() {
    Choices all;
    for (std::size_t i = 0; i < RawValues<BlockMode>::texts.size(); ++i)
        all.push_back(
            {menuLabel(static_cast<BlockMode>(i), std::nullopt), RawValues<BlockMode>::texts.at(i)});
    return all;
}

Choices looks() {
    Choices all;
    for (const SmartAudioPreset& preset : SmartAudioPreset::all())
        all.push_back({preset.menuText(), preset.label});
    return all;
}

Choices loudnessTargets() {
    Choices all = numbers(loudnessTargetChoices);
    all.push_back({"Off (levels stay as they are)", 0.0});
    return all;
}

/// Roles are called in Final Cut Pro what they are stored as.
Choices atmoRoles() {
    Choices all;
    for (const char* role :
         {"effects.atmosphere", "effects.ambience", "effects.background", "effects.room-tone"})
        all.push_back({role, role});
    return all;
}

/// The name of each case with what it does.
template <class Mode>
std::vector<std::string> described() {
    std::vector<std::string> all;
    for (std::size_t i = 0; i < RawValues<Mode>::texts.size(); ++i)
        all.push_back(std::string(RawValues<Mode>::texts.at(i)) + " – " +
                      std::string(description(static_cast<Mode>(i))));
    return all;
}

bool takesPixels(const SettingsStore& store) {
    return store.get(settings::videoResolution) == VideoResolutionMode::useAlternateFrameSize &&
           store.get(settings::aspectRatio) == "custom";
}

bool hasCustomAmounts(const SettingsStore& store) {
    return store.get(settings::smartAudioMode) == SmartAudioMode::custom;
}

SettingTab output() {
    using namespace settings;
    return {
        SettingPage::output,
        "Output",
        {{"Event",
          {Row(eventName, "Event name", "The event in Final Cut Pro that the clips go to."),
           Row(generateSyncClips, "Synchronized clips", "Every clip with its sound, as a clip of its own."),
           Row(generateMulticam, "Multicam clips", "Cameras that rolled together become one clip."),
           Row(splitEventsByScene, "One event a scene"),
           Row(eventNamePattern, "Name of a scene's event",
               "{eventName} is the event's name, {scene} the scene, {scene:3} the scene with three "
               "digits.")
               .when(isOn<splitEventsByScene>)
               .doubting(patternDoubts::eventName),
           Row(generateRawMediaEvent, "Event with the source media",
               "One more event that holds every source file."),
           Row(rawMediaEventName, "Name of that event").when(isOn<generateRawMediaEvent>)}},
         {"Clips",
          {Row(trimMode, "Length of the clips").named(words<TrimMode>(displayText)),
           Row(wrapMOSInSyncClip, "Clips without sound (MOS) become synchronized clips too"),
           Row(volumeKeyframes, "Volume keyframes",
               "The volumes of the channels follow Smart Audio's choice over time.")}},
         {"Frame",
          {Row(targetFrameRate, "Frame rate of the project").offering(frameRates()),
           Row(videoResolution, "Frame size").named(words<VideoResolutionMode>(displayText)),
           Row(aspectRatio, "Shape of the alternate frame",
               "Its width is that of the clips; “Custom pixels…” takes the two below.")
               .offering(aspectRatios())
               .when(is<videoResolution, VideoResolutionMode::useAlternateFrameSize>),
           Row(alternateWidth, "Width").in(" px").when(takesPixels),
           Row(alternateHeight, "Height").in(" px").when(takesPixels),
           Row(spatialConform, "Pictures of another shape").named(words<SpatialConformType>(displayText))}},
         {"Notes",
          {Row(notesSource, "Notes of a clip", "Whose notes the Notes field in Final Cut Pro takes.")
               .named(words<NotesSource>(displayText)),
           Row(notesVideoPrefix, "Before the camera's notes"),
           Row(notesAudioPrefix, "Before the sound recordist's notes")}},
         {"Multicam",
          {Row(multicamCodec, "Render format", "What Final Cut Pro renders a multicam clip to.")
               .named(words<MulticamCodec>(displayText))}},
         {"Global audio offset",
          {Row(globalAudioOffsetFrames, "Offset of all sound", "Later if positive, earlier if negative.")
               .in(" frames"),
           Row(globalAudioOffsetStartMode, "Applies to")
               .named({"All clips", "The clips from a file name on", "The clips from a timecode on"}),
           Row(globalAudioOffsetStartFromFilename, "First clip, by file name")
               .when(is<globalAudioOffsetStartMode, GlobalOffsetStart::fromFilename>),
           Row(globalAudioOffsetStartFromTC, "First clip, by timecode")
               .when(is<globalAudioOffsetStartMode, GlobalOffsetStart::fromTC>)
               .doubting(patternDoubts::timecode)}},
         {"Room tone",
          {Row(atmoDuration, "Length", "0 makes it 180 seconds.").in(" s", 1),
           Row(atmoAudioRole, "Role").offering(atmoRoles()).doubting(patternDoubts::role)}}}};
}

SettingTab naming() {
    using namespace settings;
    return {SettingPage::naming,
            "Naming",
            {{"Names of the clips",
              {Row(clipNamingSource, "Named after").named(words<ClipNamingSource>(GroupNaming::label)),
               Row(namingSeparator, "Separator", "Stands between scene and take."),
               Row(customNamingPattern, "Pattern", "Counts where clips are named by “Custom”.")
                   .as(Control::pattern)
                   .when(is<clipNamingSource, ClipNamingSource::custom>)
                   .doubting(patternDoubts::clipName)}}}};
}

SettingTab roles() {
    using namespace settings;
    SettingSection tracks{"Subroles of the tracks", {}, SettingSection::Form::roles};
    int track = 0;
    for (const auto& subrole : defaultSubroles)
        tracks.rows.push_back(
            Row(subrole, "Track " + std::to_string(++track)).doubting(patternDoubts::subrole));
    return {SettingPage::roles,
            "Audio roles",
            {{"Role",
              {Row(audioBaseRole, "Main role", "All recorded sound stands under it in Final Cut Pro.")
                   .doubting(patternDoubts::mainRole),
               Row(useIXMLTrackNames, "Name tracks as the recorder does",
                   "The names below count for tracks that the recorder has not named.")}},
             tracks}};
}

SettingTab smartAudio() {
    using namespace settings;
    return {
        SettingPage::smartAudio,
        "Smart Audio",
        {{"Adjustments",
          {Row(smartAudioMode, "Mode").named(described<SmartAudioMode>()),
           Row(smartAudioVoiceIso, "Voice Isolation").when(hasCustomAmounts),
           Row(smartAudioVoiceIsoSNR, "Voice Isolation below an SNR of",
               "Tracks with less noise are left alone; the mode Custom always recommends it.")
               .in(" dB", 1),
           Row(smartAudioLoudness, "Loudness").when(hasCustomAmounts),
           Row(smartAudioLoudnessUniformity, "Uniformity of the loudness").when(hasCustomAmounts),
           Row(smartAudioAutoHum, "Hum removal where hum is heard").when(hasCustomAmounts),
           Row(smartAudioHumFreq, "Mains hum")
               .offering(numbers(humFrequencyChoices))
               .when(hasCustomAmounts)}},
         {"Choice of microphones",
          {Row(smartAudioBlockMode, "Length of a stretch", "How often the microphone may change.")
               .offering(blockModes()),
           Row(bestChannelMode, "Activation of tracks",
               "What the timeline says of a clip that was analysed, and what presets hold for other "
               "programs.")
               .named(described<BestChannelMode>()),
           Row(smartAudioAggressiveness, "Aggressiveness",
               "Held in presets for other programs; no choice of a microphone depends on it.")
               .named({"Conservative", "Balanced", "Inclusive"}),
           Row(smartAudioRouting, "Follow",
               "Automatic follows whoever speaks in takes without boom and mix, else one track of the take.")
               .named({"Automatic", "One track of the take", "Whoever speaks"}),
           Row(smartAudioLoudnessTargetDB, "Speech peaks", "What the peaks of a stretch are brought to.")
               .offering(loudnessTargets()),
           Row(smartAudioBanditEnabled, "Separate speech, music and effects first",
               "Needs the stem model; Developer › Diagnostics says whether it is there.")}},
         {"Project",
          {Row(smartAudioPreset, "Look").offering(looks()),
           Row(smartAudioTargetLUFS, "Loudness of the project").offering(numbers(targetLUFSChoices))}},
         {"Playback", {Row(playbackAppliesSmartAudio, "Hear the choice while playing")}}}};
}

SettingTab offspeed() {
    using namespace settings;
    return {SettingPage::offspeed,
            "Off-speed",
            {{"Silent clips at the sensor's rate",
              {Row(generateNativeMOS, "Also make one of each off-speed clip"),
               Row(nativeMOSSuffix, "Behind its name", "{fps} is the sensor's rate.")
                   .when(isOn<generateNativeMOS>)
                   .doubting(patternDoubts::rateSuffix),
               Row(wrapNativeMOSInSyncClip, "As a synchronized clip").when(isOn<generateNativeMOS>),
               Row(nativeMOSSeparateEvent, "In an event of their own").when(isOn<generateNativeMOS>),
               Row(nativeMOSEventName, "Name of that event").when([](const SettingsStore& store) {
                   return store.get(settings::generateNativeMOS) &&
                          store.get(settings::nativeMOSSeparateEvent);
               })}},
             {"Clips at the project's rate",
              {Row(generateProjectRate, "Also make one of each off-speed clip"),
               Row(projectRateSuffix, "Behind its name", "{fps} is the project's rate.")
                   .when(isOn<generateProjectRate>)
                   .doubting(patternDoubts::rateSuffix),
               Row(projectRateSeparateEvent, "In an event of their own").when(isOn<generateProjectRate>),
               Row(projectRateEventName, "Name of that event").when([](const SettingsStore& store) {
                   return store.get(settings::generateProjectRate) &&
                          store.get(settings::projectRateSeparateEvent);
               })}},
             {"Keywords",
              {Row(offspeedAutoKeyword, "Mark off-speed clips",
                   "With “Offspeed” and the rate of the sensor.")}}}};
}

SettingTab reports() {
    using namespace settings;
    return {SettingPage::reports,
            "Reports and timecode",
            {{"Matching",
              {Row(matchingDays, "Days whose sound a clip meets")
                   .named({"Automatic (its own; clocks a day off)", "Its own day",
                           "Its own day, and across midnight", "Its own day and both beside it"})}},
             {"Reports",
              {Row(reportMatchField, "Lines belong to a clip by").named({"The clip's name", "A column"}),
               Row(reportMatchColumn, "Column").when(is<reportMatchField, ReportMatchField::column>)}},
             {"Linear timecode",
              {Row(ltcEnabled, "Read timecode from a sound track", "Where a file has no other."),
               Row(ltcChannelIndex, "Track").offering(timecodeChannels()).when(isOn<ltcEnabled>)}}}};
}

} // namespace

const std::vector<SettingTab>& settingTabs() {
    using namespace settings;
    static const std::vector<SettingTab> all{
        output(),
        naming(),
        roles(),
        smartAudio(),
        offspeed(),
        reports(),
        {SettingPage::metadata, "Metadata", {}},
        {SettingPage::keyboard,
         "Keyboard",
         {{"Stepping", {Row(playbackAudioScrubbing, "Sound while scrubbing and stepping")}}}},
        {SettingPage::models, "Models", {}},
        {SettingPage::calibration,
         "Calibration",
         {{"Source",
           {Row(calibInputAudio, "Recording",
                "The loudest minute of it is what Final Cut Pro is measured with; without one, made noise.")
                .as(Control::file)}}}},
        {SettingPage::developer,
         "Developer",
         {{"Caches",
           {Row(cachesLimitGB, "Rendered sound may take", "The oldest goes first.").in(" GB", 1)}}}},
    };
    return all;
}

const std::vector<std::string_view>& settingsWithoutRow() {
    using namespace settings;
    static const std::vector<std::string_view> all{overrideAnamorphic.key, experimentalVolumeKeyframes.key,
                                                   atmoIncludeInExport.key, lockitFieldMapping.key,
                                                   lockitCustomKeys.key};
    return all;
}

const SettingRow& settingRow(std::string_view key) {
    for (const SettingTab& tab : settingTabs())
        for (const SettingSection& section : tab.sections)
            for (const SettingRow& row : section.rows)
                if (row.setting.get().key == key) return row;
    throw std::logic_error("no row for " + std::string(key));
}

std::vector<std::string> labelsOfSettings(const std::vector<std::string>& keys) {
    std::vector<std::string> labels;
    for (const SettingTab& tab : settingTabs())
        for (const SettingSection& section : tab.sections)
            for (const SettingRow& row : section.rows)
                if (std::ranges::find(keys, row.setting.get().key) != keys.end()) labels.push_back(row.label);
    return labels;
}

} // namespace orvane
