#include "OrvaneSyncApp/ViewModels/Settings/CalibrationPanel.h"
#include "OrvaneSyncApp/ViewModels/Settings/FieldRows.h"
#include "OrvaneSyncApp/ViewModels/Settings/LockitTexts.h"
#include "OrvaneSyncApp/ViewModels/Settings/ModelRows.h"
#include "OrvaneSyncApp/ViewModels/Settings/NamingPreview.h"
#include "OrvaneSyncApp/ViewModels/Settings/PatternDoubts.h"
#include "OrvaneSyncApp/ViewModels/Settings/RoleList.h"
#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/ViewModels/Settings/ShortcutRows.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Support/Assets.h"
#include "Support/Test.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace orvane::test {
namespace {

const SettingRow& rowOf(const SettingDescription& setting) { return settingRow(setting.key); }

class SettingsModelTest : public testing::Test {
  protected:
    std::shared_ptr<platform::MemorySettingsStore> store_ = std::make_shared<platform::MemorySettingsStore>();
    SettingsModel model_{store_};
};

} // namespace

TEST_F(SettingsModelTest, everySettingHasOneRowWhoseChoicesItTakes) {
    std::map<std::string_view, int> rows;
    for (const SettingTab& tab : settingTabs())
        for (const SettingSection& section : tab.sections)
            for (const SettingRow& row : section.rows) {
                const SettingDescription& setting = row.setting;
                SCOPED_TRACE(setting.key);
                ++rows[setting.key];
                for (const SettingChoice& choice : row.choices) {
                    EXPECT_EQ(whyUseless(setting, choice.value), std::nullopt);
                    const std::string stored = settingText(choice.value);
                    const bool isWords = stored.empty() ||
                                         stored.find('.') != std::string::npos || // a role by its name
                                         !std::islower(static_cast<unsigned char>(stored[0]));
                    EXPECT_TRUE(isWords || choice.text != stored) << "words, not what is stored";
                }
                if (!row.choices.empty()) {
                    EXPECT_EQ(model_.choices(row).size(), row.choices.size()) << "the default is offered";
                } else if (const auto number = setting.defaultValue().number()) {
                    EXPECT_TRUE(setting.isInRange(*number));
                }
            }
    for (const SettingDescription& setting : SettingsCatalogue::all())
        EXPECT_EQ(rows[setting.key], setting.details.label.empty() ? 0 : 1) << setting.key;
}

TEST_F(SettingsModelTest, aRowSaysWhatHoldsAndWhatIsWrong) {
    const SettingRow& trim = rowOf(settings::trimMode);
    EXPECT_FALSE(model_.isChanged(trim));
    store_->setByName(settings::trimMode.key, "banana");
    SettingRemark remark = model_.remark(trim);
    EXPECT_EQ(remark.kind, SettingRemark::Kind::mistake);
    EXPECT_NE(remark.text.find("banana"), std::string::npos);
    EXPECT_NE(remark.text.find("Common (trim to shortest)"), std::string::npos) << remark.text;
    EXPECT_EQ(model_.value(trim), settings::trimMode.defaultValue());
    EXPECT_TRUE(model_.isChanged(trim)) << "it can be reset";

    // A value that is not in the list of choices is kept and shown.
    const SettingRow& loudness = rowOf(settings::smartAudioTargetLUFS);
    store_->set(settings::smartAudioTargetLUFS, -18.5);
    const auto choices = model_.choices(loudness);
    EXPECT_EQ(choices.size(), loudness.choices.size() + 1);
    EXPECT_EQ(model_.chosen(loudness, choices), choices.size() - 1);
    store_->setByName(settings::smartAudioMode.key, " STUDIO");
    EXPECT_EQ(model_.choices(rowOf(settings::smartAudioMode)).size(), 5U);
    EXPECT_NE(model_.remark(rowOf(settings::smartAudioMode)).text.find("-23 LUFS"), std::string::npos);
    EXPECT_FALSE(model_.isEnabled(rowOf(settings::smartAudioVoiceIso))) << "the mode sets it";

    const SettingRow& width = rowOf(settings::alternateWidth);
    store_->set(settings::videoResolution, VideoResolutionMode::useAlternateFrameSize);
    EXPECT_FALSE(model_.isEnabled(width));
    store_->set(settings::aspectRatio, "custom");
    EXPECT_TRUE(model_.isEnabled(width));

    const SettingRow& pattern = rowOf(settings::customNamingPattern);
    store_->set(settings::customNamingPattern, "{scene:3}");
    EXPECT_EQ(model_.remark(pattern).kind, SettingRemark::Kind::none) << "the pattern does not count yet";
    store_->set(settings::clipNamingSource, ClipNamingSource::custom);
    EXPECT_EQ(model_.remark(pattern).kind, SettingRemark::Kind::doubt);
}

TEST_F(SettingsModelTest, theAutomaticLengthSaysWhatTheMaterialIs) {
    SmartAudioResults heard;
    const SettingsModel model(store_, [&] { return commonestMaterial(heard); });
    const auto first = [&] { return model.choices(rowOf(settings::smartAudioBlockMode)).front().text; };
    EXPECT_EQ(first(), "Auto");
    using enum MaterialCharacter;
    for (const auto character : {fastDialog, interview, fastDialog})
        heard[UUID::random()].detectedCharacter = character;
    heard[UUID::random()] = {};
    EXPECT_EQ(first(), "Auto (currently: Fast Dialog / Comedy)");
}

TEST(PatternDoubts, tellsWhatComesOutOtherThanMeant) {
    struct Case {
        std::string (*doubt)(std::string_view);
        const char* text;
        const char* says; ///< empty: no text
    };
    namespace doubts = patternDoubts;
    const Case cases[] = {
        {doubts::clipName, "{scene}_{take}_{counter:3}{tc}", ""},
        {doubts::clipName, "{scene:3}-{take}", "“{scene:3}” is no token"},
        {doubts::clipName, "{counter:x}", "“{counter:x}” is no token"},
        {doubts::clipName, "{scene-{take}", "is not paired"},
        {doubts::clipName, "scene}", "is not paired"},
        {doubts::clipName, " ", "{scene}-{take}"},
        {doubts::eventName, "{eventName} {scene:3}", ""},
        {doubts::eventName, "{take}", "“{take}” is no token"},
        {doubts::rateSuffix, "[{fps} FPS]", ""},
        {doubts::mainRole, "dialogue.Boom", "subrole"},
        {doubts::role, "effects.atmosphere", ""},
        {doubts::subrole, "Lav.1", "no point"},
        {doubts::timecode, "10:00:00:24", ""},
        {doubts::timecode, "10:61:00:00", "does not count"},
    };
    for (const Case& one : cases) {
        const std::string said = one.doubt(one.text);
        EXPECT_EQ(said.empty(), *one.says == '\0') << one.text << said;
        EXPECT_NE(said.find(one.says), std::string::npos) << one.text << said;
    }
}

TEST_F(SettingsModelTest, previewsNamesOfTheWorkOrOfAnExample) {
    PatternEditor editor;
    editor.pattern = "{scene}-{take}_{counter:2}";
    NamingPreview preview = namingPreview(editor, {});
    EXPECT_EQ(preview.name, "023-3_01");
    EXPECT_TRUE(preview.clip.starts_with("an example"));
    const SyncGroupList clips({clip(video("A003C012.mov"), slated(audio("T.wav"), "7", "02"))});
    EXPECT_EQ(namingPreview(editor, clips).name, "7-2_01");
    editor.pattern = "{date}";
    EXPECT_EQ(namingPreview(editor, clips).name, "A003C012") << "what an empty name falls back on";
}

TEST_F(SettingsModelTest, tablesSayWhatMeetsInOnePlace) {
    ShortcutBindings bindings = defaultBindings();
    for (const ShortcutRow& row : shortcutRows(bindings))
        EXPECT_TRUE(row.isDefault && row.conflict.empty()) << row.label;
    bindings[ShortcutAction::clapCheck] = bindings[ShortcutAction::lockCurrent];
    const auto rows = shortcutRows(bindings);
    const ShortcutRow& lock = rows[static_cast<std::size_t>(ShortcutAction::lockCurrent)];
    EXPECT_EQ(lock.sharedWith, std::vector{ShortcutAction::clapCheck});
    EXPECT_EQ(lock.conflict, "“Clap Check Loop” has this key too and gets it.");
    EXPECT_EQ(lock.key, "Ctrl+L");
    EXPECT_TRUE(matches(lock, SearchWords("LOCK current")));
    EXPECT_FALSE(matches(lock, SearchWords("zoom")));

    LockitFieldMapping::set(*store_, FCPMetaTarget::description, LockitField::sceneContent);
    LockitFieldMapping::set(*store_, FCPMetaTarget::custom, " ", LockitField::tags);
    const auto fields = fieldRows(LockitFieldMapping::current(*store_));
    EXPECT_NE(fields[static_cast<std::size_t>(LockitField::shotDescription)].remark.find("“Scene Content”"),
              std::string::npos);
    EXPECT_TRUE(fields[static_cast<std::size_t>(LockitField::tags)].isLeftOut);
    EXPECT_TRUE(fields[static_cast<std::size_t>(LockitField::take)].remark.empty());

    RoleList roles(*store_);
    roles.move(0, 2);
    roles.move(7, 1);
    store_->setAll(roles.values());
    EXPECT_EQ(store_->get(settings::defaultSubroles[0]), "Boom");
    EXPECT_EQ(store_->get(settings::defaultSubroles[2]), "Mix");
    EXPECT_TRUE(roles.sharedRoles().empty());
    store_->set(settings::defaultSubroles[7], "Mix");
    EXPECT_NE(RoleList(*store_).sharedRoles().find("tracks 3 and 8 share “Mix”"), std::string::npos);

    const std::vector<LockitProject> projects{{"p1", "Winter", {}, {}, {}}};
    EXPECT_EQ(folderBadge("p1", true, projects), "Winter");
    EXPECT_EQ(folderBadge("p2", true, projects), "Lockit ✓");
    EXPECT_EQ(folderBadge("p1", false, projects), "Lockit");
}

TEST_F(SettingsModelTest, calibrationOffersWhatItsStateAllows) {
    CalibrationState state;
    CalibrationPanel panel = calibrationPanel(state);
    EXPECT_EQ(panel.buildTitle, "Build matrix");
    EXPECT_TRUE(panel.canBuild && !panel.canShowDocument && !panel.canSave);
    state.hasMatrixOnDisk = true;
    state.measurement = CalibrationResult{};
    state.measurement->measurements = {{{50, 25, 10}, 7.0, -0.5, 2.0, "b.wav"},
                                       {{0, 0, 0}, 0, 0, 0, "a.wav"}};
    panel = calibrationPanel(state);
    EXPECT_EQ(panel.buildTitle, "Rebuild matrix");
    EXPECT_TRUE(panel.canSave && panel.areRowsUnsaved);
    EXPECT_EQ(panel.rows.front().perm.voiceIsoAmount, 0) << "sorted by their settings";
    state.measurement->measurements.clear();
    for (const CalibrationPerm& perm : permsOf(CalibrationMatrix::coarse))
        state.measurement->measurements.push_back({perm, 0, 0, 0, filenameTag(perm) + ".wav"});
    EXPECT_EQ(calibrationPanel(state).gaps, "");
    state.measurement->measurements.pop_back();
    state.unreadFiles = {"VI100_L100_U100.wav"};
    EXPECT_EQ(calibrationPanel(state).gaps,
              "1 of 27 clips of the document were not measured: VI100_L100_U100.\n"
              "These files could not be read: VI100_L100_U100.wav.");
    state.savedCalibration = state.measurement;
    EXPECT_FALSE(calibrationPanel(state).canSave);
    state.isMeasuring = true;
    EXPECT_FALSE(calibrationPanel(state).canBuild);
}

TEST(ModelRows, sayWhatCanBeDoneAndSurviveAnyAnswer) {
    const ModelList list = modelList(platform::JSON::parse(R"({
        "models": [{"id": "a", "name": "A", "size": "~80 MB", "status": {"state": "downloading", "progress": 0.5}},
                   {"id": "b", "isWired": true, "downloadURL": "https://x", "status": {"state": "error", "message": "Download cancelled"}},
                   {"id": "c", "status": {"state": "ready"}}, 7,
                   {"id": "d", "downloadURL": "", "status": {"state": "error", "message": "No model host"}}],
        "totalSizeMB": 81, "bandit": {"isInstalled": false, "path": "/x/Bandit.onnx", "problem": "copy it"}})"));
    ASSERT_EQ(list.rows.size(), 5U);
    EXPECT_EQ(list.rows[4].state, ModelRow::State::notSetUp) << "an optional model is no error";
    EXPECT_EQ(list.rows[4].download, "");
    EXPECT_EQ(list.rows[0].status, "50 %");
    EXPECT_EQ(list.rows[0].facts, "~80 MB · Not active yet");
    EXPECT_EQ(list.rows[1].download, "Retry");
    EXPECT_EQ(list.rows[1].facts, "");
    EXPECT_TRUE(list.rows[0].download.empty() && list.rows[2].download.empty() && list.isDownloading);
    EXPECT_EQ(list.diskUsage, "Disk usage: 81 MiB");
    EXPECT_EQ(list.stems, "Bandit.onnx not installed");
    EXPECT_TRUE(modelList({}).rows.empty());
}

} // namespace orvane::test
