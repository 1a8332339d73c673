#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/PresetBar.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingRowView.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Views/Application.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <QWheelEvent>

#include <atomic>
#include <filesystem>

namespace orvane::views {

namespace {

using test::waitUntil;

/// Calls the drop directly: Qt would take an event for another program's drag that had never entered.
struct DroppedOn : QTreeWidget {
    using QTreeWidget::dropEvent;
};

class SettingsTest : public testing::Test {
  protected:
    SettingsTest() {
        test::application();
        registerStandardDefaults(*settings_);
        Desktop::Dependencies dependencies;
        dependencies.mainThread = qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        desktop_ = std::make_unique<Desktop>(std::move(dependencies));
    }
    void open(SettingPage page, QWidget* over = nullptr) {
        window_ = std::make_unique<SettingsWindow>(*desktop_, over);
        window_->show();
        window_->showTab(page);
        QCoreApplication::processEvents();
    }
    /// The control in the row of a setting, or another widget of the window.
    template <class Control>
    Control* find(std::string_view name) {
        QWidget* row = window_->findChild<QWidget*>(text(name));
        if (row == nullptr) throw std::logic_error("no widget " + std::string(name));
        if (auto* itself = dynamic_cast<Control*>(row)) return itself;
        if (auto* within = row->findChild<Control*>()) return within;
        throw std::logic_error("no such control in " + std::string(name));
    }
    QPushButton* buttonOf(QWidget& place, const QString& name) {
        for (auto* one : place.findChildren<QPushButton*>())
            if ((one->text() == name || one->accessibleName() == name || one->toolTip() == name) &&
                one->isVisible())
                return one;
        throw std::logic_error("no button " + name.toStdString());
    }
    QLineEdit& lineOf(QWidget& place, const QString& name) {
        for (auto* one : place.findChildren<QLineEdit*>())
            if (one->accessibleName() == name) return *one;
        throw std::logic_error("no field " + name.toStdString());
    }
    void click(QPushButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    void type(QLineEdit& line, const QString& what) {
        line.setFocus();
        line.selectAll();
        QTest::keyClicks(&line, what);
        QTest::keyClick(&line, Qt::Key_Return);
    }
    std::string remarkOf(QWidget& place) {
        std::string said;
        for (const QWidget* one : place.findChildren<QWidget*>())
            if (const auto* remark = dynamic_cast<const Remark*>(one); remark != nullptr)
                said += utf8(remark->text());
        return said;
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment config_{"XDG_CONFIG_HOME", folder_.path("config").c_str()};
    test::ScopedEnvironment data_{"XDG_DATA_HOME", folder_.path("data").c_str()};
    test::ScopedEnvironment cache_{"XDG_CACHE_HOME", folder_.path("cache").c_str()};
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<SettingsWindow> window_;
};

} // namespace

TEST_F(SettingsTest, controlsStoreAtOnceAndFollowOthers) {
    open(SettingPage::output);
    auto* trim = find<QComboBox>(settings::trimMode.key);
    trim->setFocus();
    QTest::keyClick(trim, Qt::Key_Down);
    EXPECT_TRUE(waitUntil([&] { return settings_->get(settings::trimMode) == TrimMode::videoDuration; }));
    QWidget* row = window_->findChild<QWidget*>(text(settings::trimMode.key));
    ASSERT_TRUE(waitUntil([&] { return row->findChild<QPushButton*>()->isVisible(); }));
    click(buttonOf(*row, "Reset to default"));
    EXPECT_TRUE(waitUntil([&] { return !settings_->storedValue(settings::trimMode); }));

    // Values that another window or program stores, invalid ones too.
    settings_->set(settings::trimMode, TrimMode::noTrim);
    EXPECT_TRUE(waitUntil([&] { return trim->currentIndex() == 2; }));
    settings_->setByName(settings::trimMode.key, "banana");
    EXPECT_TRUE(waitUntil([&] { return remarkOf(*row).find("banana") != std::string::npos; }));

    type(*find<QLineEdit>(settings::eventName.key), "Day 1");
    EXPECT_EQ(settings_->get(settings::eventName), "Day 1");
    EXPECT_FALSE(find<QLineEdit>(settings::eventNamePattern.key)->isEnabled());
    QTest::keyClick(find<QCheckBox>(settings::splitEventsByScene.key), Qt::Key_Space);
    EXPECT_TRUE(waitUntil([&] { return find<QLineEdit>(settings::eventNamePattern.key)->isEnabled(); }));

    // A mode sets the amounts; in the mode Custom the user's amounts are restored.
    open(SettingPage::smartAudio);
    auto* mode = find<QComboBox>(settings::smartAudioMode.key);
    mode->setFocus();
    QTest::keyClick(mode, Qt::Key_Up);
    EXPECT_EQ(settings_->get(settings::smartAudioMode), SmartAudioMode::cinematic);
    EXPECT_NEAR(settings_->get(settings::smartAudioVoiceIso), 0.7, 1e-6);
    auto* amount = find<QAbstractSlider>(settings::smartAudioVoiceIso.key);
    EXPECT_TRUE(waitUntil([&] { return amount->value() == 70 && !amount->isEnabled(); }));
    QTest::keyClick(mode, Qt::Key_Down);
    EXPECT_TRUE(waitUntil([&] { return amount->isEnabled(); }));
    amount->setFocus();
    QTest::keyClick(amount, Qt::Key_Right);
    EXPECT_NEAR(settings_->get(settings::smartAudioVoiceIso), 0.71, 1e-6);
}

/// The final order is right although several changes may be written at once.
TEST_F(SettingsTest, placesAreWrittenInTheirOrder) {
    for (int i = 0; i <= 100; ++i) design::keptState::set(QStringLiteral("place"), i);
    design::keptState::set(QStringLiteral("gone"), 1);
    design::keptState::remove(QStringLiteral("gone"));
    design::keptState::finish();
    const QSettings stored;
    EXPECT_EQ(stored.value(QStringLiteral("place")).toInt(), 100);
    EXPECT_FALSE(stored.contains(QStringLiteral("gone")));
}

TEST_F(SettingsTest, aNumberIsShownAsItIsStored) {
    for (const SettingTab& tab : settingTabs()) {
        open(tab.page);
        for (const SettingSection& section : tab.sections)
            for (const SettingRow& row : section.rows) {
                if (row.control != SettingRow::Control::number) continue;
                const SettingDescription& setting = row.setting;
                ASSERT_TRUE(setting.details.range) << setting.key;
                const auto [lowest, highest] = *setting.details.range;
                const bool isWhole = setting.kind == SettingDescription::Kind::integer;
                for (const double stored : {lowest, highest, isWhole ? lowest + 1 : lowest + 0.125}) {
                    settings_->setByName(setting.key, stored);
                    EXPECT_TRUE(waitUntil([&] {
                        return find<QDoubleSpinBox>(setting.key)->value() == stored;
                    })) << setting.key
                        << " " << stored;
                    EXPECT_EQ(settings_->value(setting)->number(), stored) << "showing stores nothing";
                }
            }
    }
}

TEST_F(SettingsTest, aWordIsFoundOverAllTabs) {
    open(SettingPage::output);
    auto* pages = window_->findChild<QStackedWidget*>();
    EXPECT_LT(pages->count(), window_->tabCount()) << "all pages at once hold up the interface thread";
    const auto tabs = [&] {
        QStringList shown;
        auto* list = window_->findChild<QListWidget*>();
        for (int row = 0; row < list->count(); ++row)
            if (!list->item(row)->isHidden()) shown << list->item(row)->text();
        return shown.join(", ").toStdString();
    };
    struct Case {
        const char* words;
        const char* tabs;
    };
    for (const Case& one : {Case{"mains hum", "Smart Audio"}, Case{"ale.matchColumn", "Reports and timecode"},
                            Case{"clap check", "Keyboard"}, Case{"take comment", "Metadata"},
                            Case{"LETTERBOX", "Output"}, Case{"nothing of the kind", ""}}) {
        window_->search()->setText(one.words);
        EXPECT_TRUE(waitUntil([&] { return tabs() == one.tabs; })) << one.words << ": " << tabs();
    }
    EXPECT_TRUE(
        waitUntil([&] { return dynamic_cast<design::EmptyState*>(pages->currentWidget()) != nullptr; }));
    window_->search()->setText("hum");
    EXPECT_TRUE(find<QComboBox>(settings::smartAudioHumFreq.key)->isVisible());
    EXPECT_FALSE(find<QComboBox>(settings::smartAudioMode.key)->isVisible());
    window_->search()->clear();
    EXPECT_TRUE(find<QComboBox>(settings::smartAudioMode.key)->isVisible());

    auto* list = window_->findChild<QListWidget*>();
    window_->showTab(window_->tabCount() - 1);
    QTest::keyClick(window_.get(), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(list->currentRow(), 0) << "round the end";
    window_->search()->setText("take comment");
    const int found = list->currentRow();
    QTest::keyClick(window_.get(), Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(list->currentRow(), found) << "the only one in view";
}

TEST_F(SettingsTest, aKeyIsRecordedAndAConflictSettled) {
    const auto& center = desktop_->context().shortcuts();
    ASSERT_TRUE(waitUntil([&] { return center->ready().isDone(); }));
    QMainWindow main;
    main.menuBar()->addMenu("&File")->addAction("E&xport")->setShortcut(QKeySequence("Ctrl+E"));
    open(SettingPage::keyboard, &main);
    const auto keyOf = [&](ShortcutAction action) { return center->bindings().at(action).text(); };
    auto* key = find<QPushButton>(rawValue(ShortcutAction::clapCheck));
    click(key);
    EXPECT_EQ(key->text(), "Press a key…");
    QTest::keyClick(key, Qt::Key_Escape);
    EXPECT_EQ(keyOf(ShortcutAction::clapCheck), "c");
    click(key);
    QTest::keyClick(key, Qt::Key_F5);
    EXPECT_NE(remarkOf(*key->parentWidget()).find("cannot be chosen"), std::string::npos);
    click(key);
    QTest::keyClick(key, Qt::Key_L, Qt::ControlModifier);
    ASSERT_TRUE(waitUntil([&] { return keyOf(ShortcutAction::clapCheck) == "command+l"; }));
    EXPECT_NE(remarkOf(*key->parentWidget()).find("Lock Current Clip"), std::string::npos);
    click(find<QPushButton>("settle clapCheck"));
    EXPECT_TRUE(waitUntil([&] { return keyOf(ShortcutAction::lockCurrent) == "none"; }));
    EXPECT_EQ(remarkOf(*key->parentWidget()), "");
    click(key);
    QTest::keyClick(key, Qt::Key_E, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([&] {
        return remarkOf(*key->parentWidget()).find("“Export”") != std::string::npos;
    })) << "the menu keeps its key";

    type(*window_->findChild<QWidget*>("resetShortcuts")->parentWidget()->findChild<QLineEdit*>(), "Mine");
    EXPECT_TRUE(waitUntil([&] { return center->currentProfileName() == "Mine"; }));
    click(find<QPushButton>("resetShortcuts"));
    EXPECT_EQ(keyOf(ShortcutAction::lockCurrent), "none") << "it is asked first";
    click(buttonOf(*window_->findChild<QWidget*>("keyboardBanner"), "Reset"));
    EXPECT_TRUE(waitUntil([&] { return center->bindings() == defaultBindings(); }));
    EXPECT_TRUE(waitUntil([&] {
        return std::ranges::any_of(window_->findChildren<QComboBox*>(), [](const QComboBox* one) {
            return one->currentText() == "Mine (changed)";
        });
    })) << "the keys are not the profile's";
    click(buttonOf(*window_, "Delete"));
    EXPECT_EQ(center->availableProfiles().size(), 1U) << "it is asked first";
    click(buttonOf(*window_->findChild<QWidget*>("keyboardBanner"), "Delete"));
    EXPECT_TRUE(waitUntil([&] { return center->availableProfiles().empty(); }));
    window_.reset();
}

TEST_F(SettingsTest, patternsRolesAndFieldsAreEdited) {
    settings_->set(settings::clipNamingSource, ClipNamingSource::custom);
    open(SettingPage::naming);
    auto* pattern = find<QLineEdit>(settings::customNamingPattern.key);
    pattern->setCursorPosition(0);
    click(find<QPushButton>("{tape}"));
    EXPECT_EQ(settings_->get(settings::customNamingPattern), "{tape}{scene}-{take}");
    click(find<QPushButton>("insertCounter"));
    EXPECT_EQ(settings_->get(settings::customNamingPattern), "{tape}{counter:3}{scene}-{take}");
    EXPECT_TRUE(find<QLabel>("namingPreview")->text().contains("A001001023-3"));

    open(SettingPage::roles);
    click(buttonOf(*window_, "Move the role of track 1 down"));
    EXPECT_EQ(settings_->get(settings::defaultSubroles[0]), "Boom");
    EXPECT_EQ(settings_->get(settings::defaultSubroles[1]), "Mix");
    type(lineOf(*window_, "Subrole of track 3"), "Lavalier");
    EXPECT_EQ(settings_->get(settings::defaultSubroles[2]), "Lavalier");

    open(SettingPage::metadata);
    auto* target = find<QComboBox>(rawValue(LockitField::tags));
    target->setFocus();
    QTest::keyClick(target, Qt::Key_End);
    ASSERT_TRUE(waitUntil([&] {
        return LockitFieldMapping::current(*settings_).target(LockitField::tags) == FCPMetaTarget::custom;
    }));
    QLineEdit* key = nullptr;
    ASSERT_TRUE(waitUntil([&] {
        for (auto* one : window_->findChildren<QLineEdit*>())
            if (one->accessibleName() == "Metadata key of “Tags (print/PU)”" && one->isVisible()) key = one;
        return key != nullptr;
    }));
    type(*key, "com.example.tags");
    EXPECT_EQ(LockitFieldMapping::current(*settings_).metadataKey(LockitField::tags), "com.example.tags");
}

TEST_F(SettingsTest, aSignInWaitsCanBeCancelledAndTakesACallback) {
    folder_.write("config/Orvane Tandrel/service.json",
                  R"({"baseURL": "https://lockit.invalid", "clientID": "id", "clientSecret": "secret"})");
    const auto isPageShown = std::make_shared<std::atomic<bool>>(false); // set on the thread that waits
    desktop_->context().showPage = [isPageShown](const std::string&) {
        return isPageShown->store(true), true;
    };
    open(SettingPage::metadata);
    const auto says = [&](const QString& what) {
        return waitUntil([&] { return window_->findChild<QWidget*>("account")->accessibleName() == what; });
    };
    ASSERT_TRUE(waitUntil([&] { return desktop_->context().account()->ready().isDone(); }));
    ASSERT_TRUE(says("Not signed in"));
    click(buttonOf(*window_, "Sign In with LockitNetwork"));
    ASSERT_TRUE(says("Opening browser…"));
    click(buttonOf(*window_, "Cancel"));
    ASSERT_TRUE(says("Not signed in"));
    *isPageShown = false;
    click(buttonOf(*window_, "Sign In with LockitNetwork"));
    ASSERT_TRUE(says("Opening browser…"));
    ASSERT_TRUE(waitUntil([&] { return isPageShown->load(); }));
    type(lineOf(*window_, "Address that the browser ends at"),
         "orvane-tandrel://oauth/callback?code=x&state=forged");
    ASSERT_TRUE(says("Not signed in"));
    EXPECT_NE(remarkOf(*window_).find("state mismatch"), std::string::npos) << remarkOf(*window_);
}

TEST_F(SettingsTest, developersSeeCachesAndTheMachine) {
    folder_.write("cache/Orvane Tandrel/ProbeCache/a", std::string(2'000'000, 'x'));
    open(SettingPage::developer);
    auto* caches = window_->findChild<QTableWidget*>("caches");
    ASSERT_TRUE(waitUntil([&] { return caches->rowCount() == 1; }));
    EXPECT_EQ(caches->item(0, 2)->text(), "2.0 MB");
    auto* checks = window_->findChild<QWidget*>("diagnostics");
    EXPECT_TRUE(waitUntil([&] { return checks->findChildren<QLabel*>().size() > 10; }));
    click(buttonOf(*window_, "Clear Caches"));
    EXPECT_TRUE(waitUntil([&] { return remarkOf(*window_).find("Removed ") != std::string::npos; }));
    EXPECT_FALSE(std::filesystem::exists(folder_.path("cache/Orvane Tandrel/ProbeCache/a")));
}

TEST_F(SettingsTest, sessionsAreDraggedAndPresetsFollowTheFolder) {
    SessionsPanel panel(*desktop_);
    panel.show();
    desktop_->run("newSession");
    SessionManager& sessions = desktop_->sessions();
    sessions.places().createFolder("Winter");
    auto* tree = panel.findChild<QTreeWidget*>();
    ASSERT_TRUE(waitUntil([&] { return tree->topLevelItemCount() == 2; }));
    tree->setCurrentItem(tree->topLevelItem(1));
    const QPoint place = tree->visualItemRect(tree->topLevelItem(0)).center();
    QMimeData data;
    QDropEvent drop(place, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    (tree->*&DroppedOn::dropEvent)(&drop);
    EXPECT_EQ(sessions.places().folderOfOpenSession(), "Winter");
    ASSERT_TRUE(waitUntil([&] { return tree->topLevelItemCount() == 1; }));
    tree->topLevelItem(0)->setText(0, "Summer"); // as the editor in the tree does
    EXPECT_TRUE(
        waitUntil([&] { return sessions.places().folderNames() == std::vector<std::string>{"Summer"}; }));

    settings_->set(settings::eventName, "Kept");
    click(buttonOf(panel, "Save the present settings as a preset"));
    type(lineOf(panel, "Name of the preset"), "House/1");
    const auto active = [&] { return sessions.folders().find("Summer")->activePresetName.value_or(""); };
    ASSERT_TRUE(waitUntil([&] { return active() == "House/1"; }));
    settings_->set(settings::eventName, "Changed");
    auto* presets = panel.findChild<QComboBox*>();
    EXPECT_TRUE(waitUntil([&] { return presets->currentText() == "House-1 (changed)"; }))
        << presets->currentText().toStdString();
    presets->setCurrentIndex(0);
    presets->setFocus();
    QWheelEvent wheel({}, {}, {}, {0, -120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(presets, &wheel);
    EXPECT_EQ(presets->currentIndex(), 0);
    QTest::keyClick(presets, Qt::Key_Down);
    EXPECT_TRUE(waitUntil([&] { return settings_->get(settings::eventName) == "Kept"; }));
    EXPECT_TRUE(waitUntil([&] { return presets->currentText() == "House-1"; }));

    // If no folder restores it, the next start does.
    sessions.places().setFolder(*sessions.currentSessionId(), std::nullopt);
    PresetBar next(*desktop_);
    EXPECT_TRUE(waitUntil([&] { return next.findChild<QComboBox*>()->currentText() == "House-1"; }));
    sessions.places().setFolder(*sessions.currentSessionId(), "Summer");

    // A change that can't be undone is confirmed first, and Return declines.
    const auto answer = [&](const char* pressed, const auto& act) {
        QTimer::singleShot(0, &panel, [pressed] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_NE(box, nullptr);
            if (*pressed == '\0') return QTest::keyClick(box, Qt::Key_Return);
            for (QAbstractButton* one : box->buttons())
                if (one->text() == pressed) one->click();
        });
        act();
    };
    const auto remove = [&] { click(buttonOf(panel, "Delete the preset")); };
    answer("", remove);
    answer("Delete", remove);
    EXPECT_TRUE(waitUntil([&] { return presets->count() == 1; }));
    tree->setCurrentItem(tree->topLevelItem(0)->child(0));
    const auto removeSession = [&] { QTest::keyClick(tree, Qt::Key_Delete); };
    answer("", removeSession);
    EXPECT_EQ(sessions.sessions().size(), 1U);
    answer("Delete", removeSession);
    EXPECT_TRUE(waitUntil([&] { return sessions.sessions().empty(); }));
}

} // namespace orvane::views
