#include "OrvaneSyncApp/ViewModels/Settings/PatternDoubts.h"
#include "OrvaneSyncApp/ViewModels/Settings/SettingRows.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/SettingsStore.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace orvane {

namespace {

using Control = SettingRow::Control;
using platform::SettingsStore;

/// Builds a row; its functions set what only some rows have.
class Row {
  public:
    explicit Row(const SettingDescription& setting)
        : row_{setting,
               controlOf(setting),
               std::string(setting.details.label),
               std::string(setting.details.hint),
               setting.offers(),
               std::string(setting.details.unit),
               setting.details.decimals} {
        if (!row_.choices.empty()) row_.control = Control::choice;
        if (const auto range = setting.details.range; range && range->highest == 1)
            row_.control = Control::amount;
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
    operator SettingRow() const { return row_; } // implicit, as rows are written in lists

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

/// Whether a setting that is a switch is on.
template <const auto& setting>
bool isOn(const SettingsStore& store) {
    return store.get(setting);
}
template <const auto& setting, auto value>
bool is(const SettingsStore& store) {
    return store.get(setting) == value;
}

bool takesPixels(const SettingsStore& store) {
    return store.get(settings::videoResolution) == VideoResolutionMode::useAlternateFrameSize &&
           store.get(settings::aspectRatio) == "custom";
}

bool hasCustomAmounts(const SettingsStore& store) {
    return store.get(settings::smartAudioMode) == SmartAudioMode::custom;
}

// Named are the first row of a section, rows with a condition or another control, and rows whose place is not
// the one that `withOthers` gives.

SettingTab output() {
    using namespace settings;
    return {SettingPage::output,
            "Output",
            {{"Event",
              {Row(eventName), Row(splitEventsByScene),
               Row(eventNamePattern).when(isOn<splitEventsByScene>).doubting(patternDoubts::eventName),
               Row(generateRawMediaEvent), Row(rawMediaEventName).when(isOn<generateRawMediaEvent>)}},
             {"Clips", {Row(trimMode), Row(wrapMOSInSyncClip), Row(volumeKeyframes)}},
             {"Frame",
              {Row(targetFrameRate), Row(videoResolution),
               Row(aspectRatio).when(is<videoResolution, VideoResolutionMode::useAlternateFrameSize>),
               Row(alternateWidth).when(takesPixels), Row(alternateHeight).when(takesPixels),
               Row(spatialConform)}},
             {"Notes", {Row(notesSource)}},
             {"Multicam", {Row(multicamCodec)}},
             {"Global audio offset",
              {Row(globalAudioOffsetFrames),
               Row(globalAudioOffsetStartFromFilename)
                   .when(is<globalAudioOffsetStartMode, GlobalOffsetStart::fromFilename>),
               Row(globalAudioOffsetStartFromTC)
                   .when(is<globalAudioOffsetStartMode, GlobalOffsetStart::fromTC>)
                   .doubting(patternDoubts::timecode)}},
             {"Room tone", {Row(atmoAudioRole).doubting(patternDoubts::role)}}}};
}

SettingTab naming() {
    using namespace settings;
    return {SettingPage::naming,
            "Naming",
            {{"Names of the clips",
              {Row(clipNamingSource), Row(namingSeparator),
               Row(customNamingPattern)
                   .as(Control::pattern)
                   .when(is<clipNamingSource, ClipNamingSource::custom>)
                   .doubting(patternDoubts::clipName)}}}};
}

SettingTab roles() {
    using namespace settings;
    SettingSection tracks{"Subroles of the tracks", {}, SettingSection::Form::roles};
    for (const auto& subrole : defaultSubroles)
        tracks.rows.push_back(Row(subrole).doubting(patternDoubts::subrole));
    return {
        SettingPage::roles,
        "Audio roles",
        {{"Role", {Row(audioBaseRole).doubting(patternDoubts::mainRole), Row(useIXMLTrackNames)}}, tracks}};
}

SettingTab smartAudio() {
    using namespace settings;
    return {SettingPage::smartAudio,
            "Smart Audio",
            {{"Adjustments",
              {Row(smartAudioMode), Row(smartAudioVoiceIso).when(hasCustomAmounts),
               Row(smartAudioLoudness).when(hasCustomAmounts),
               Row(smartAudioLoudnessUniformity).when(hasCustomAmounts),
               Row(smartAudioAutoHum).when(hasCustomAmounts), Row(smartAudioHumFreq).when(hasCustomAmounts)}},
             {"Choice of microphones",
              {Row(smartAudioBlockMode), Row(bestChannelMode), Row(smartAudioAggressiveness),
               Row(smartAudioRouting), Row(smartAudioBanditEnabled)}},
             {"Project", {Row(smartAudioPreset), Row(smartAudioTargetLUFS)}},
             {"Playback", {Row(playbackAppliesSmartAudio)}}}};
}

SettingTab offspeed() {
    using namespace settings;
    return {SettingPage::offspeed,
            "Off-speed",
            {{"Clips without sound at the sensor's rate",
              {Row(generateNativeMOS),
               Row(nativeMOSSuffix).when(isOn<generateNativeMOS>).doubting(patternDoubts::rateSuffix),
               Row(wrapNativeMOSInSyncClip).when(isOn<generateNativeMOS>),
               Row(nativeMOSSeparateEvent).when(isOn<generateNativeMOS>),
               Row(nativeMOSEventName).when([](const SettingsStore& store) {
                   return store.get(settings::generateNativeMOS) &&
                          store.get(settings::nativeMOSSeparateEvent);
               })}},
             {"Clips at the project's rate",
              {Row(generateProjectRate),
               Row(projectRateSuffix).when(isOn<generateProjectRate>).doubting(patternDoubts::rateSuffix),
               Row(projectRateSeparateEvent).when(isOn<generateProjectRate>),
               Row(projectRateEventName).when([](const SettingsStore& store) {
                   return store.get(settings::generateProjectRate) &&
                          store.get(settings::projectRateSeparateEvent);
               })}},
             {"Keywords", {Row(offspeedAutoKeyword)}}}};
}

SettingTab reports() {
    using namespace settings;
    return {SettingPage::reports,
            "Reports and timecode",
            {{"Matching", {Row(matchingDays)}},
             {"Reports",
              {Row(reportMatchField),
               Row(reportMatchColumn).when(is<reportMatchField, ReportMatchField::column>)}},
             {"Linear timecode", {Row(ltcEnabled), Row(ltcChannelIndex).when(isOn<ltcEnabled>)}}}};
}

/// The section that has the row of a setting, with the row's place in it; null: none has.
std::pair<SettingSection*, std::ptrdiff_t> sectionOf(std::vector<SettingTab>& tabs, std::string_view key) {
    for (SettingTab& tab : tabs)
        for (SettingSection& section : tab.sections) {
            const auto row = std::ranges::find(section.rows, key,
                                               [](const SettingRow& each) { return each.setting.get().key; });
            if (row != section.rows.end()) return {&section, row - section.rows.begin()};
        }
    return {};
}

/// Every other setting that has a label: behind the row of the one declared before it in its family.
std::vector<SettingTab> withOthers(std::vector<SettingTab> tabs) {
    const SettingDescription* before = nullptr;
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        if (setting.details.label.empty()) continue;
        if (before != nullptr && before->family == setting.family &&
            sectionOf(tabs, setting.key).first == nullptr)
            if (const auto [section, place] = sectionOf(tabs, before->key); section != nullptr)
                section->rows.insert(section->rows.begin() + place + 1, Row(setting));
        before = &setting;
    }
    return tabs;
}

} // namespace

const std::vector<SettingTab>& settingTabs() {
    using namespace settings;
    static const std::vector<SettingTab> all = withOthers({
        output(),
        naming(),
        roles(),
        smartAudio(),
        offspeed(),
        reports(),
        {SettingPage::metadata, "Metadata", {}},
        {SettingPage::keyboard, "Keyboard", {{"Stepping", {Row(playbackAudioScrubbing)}}}},
        {SettingPage::models, "Models", {}},
        {SettingPage::calibration, "Calibration", {{"Source", {Row(calibInputAudio).as(Control::file)}}}},
        {SettingPage::developer, "Developer", {{"Caches", {Row(cachesLimitGB)}}}},
    });
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
