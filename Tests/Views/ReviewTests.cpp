#include "MediaFactory/WaveMaker.h"
#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Inspector/AttachSheet.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Review/FullscreenWindow.h"
#include "OrvaneSyncApp/Views/Review/PictureCanvas.h"
#include "OrvaneSyncApp/Views/Review/PictureView.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"
#include "OrvaneSyncApp/Views/Review/SyncLensView.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Support/Assets.h"
#include "Support/NumberedClip.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Views/Application.h"

#include <QComboBox>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpression>
#include <QTableView>

#include <algorithm>
#include <filesystem>

namespace orvane::views {

namespace {

using test::waitUntil;

constexpr double offset = 0.4; ///< of the first camera's sound

/// Two cameras of one take of two seconds, and a single clip. The sound has its clap at 0.8 s.
class ReviewTest : public testing::Test {
  protected:
    ReviewTest() {
        test::application();
        registerStandardDefaults(*settings_);
        Desktop::Dependencies dependencies;
        dependencies.mainThread = qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        dependencies.openPlayers = [thread = dependencies.mainThread] {
            return std::shared_ptr(platform::PlayerSystem::create(thread));
        };
        desktop_ = std::make_unique<Desktop>(std::move(dependencies));
        window_ = std::make_unique<MainWindow>(*desktop_);
        window_->resize(1200, 800);
        window_->show();
    }

    void SetUp() override {
        constexpr std::size_t rate = 8000;
        std::vector<float> samples(3 * rate, 0.001F);
        for (std::size_t i = rate * 8 / 10; i < rate * 8 / 10 + 300; ++i)
            samples[i] = i % 2 == 0 ? 0.9F : -0.9F;
        MediaAsset sound = test::audio("T01.wav", "10:00:00:00", 3);
        sound.url =
            FileURL{folder_.write("T01.wav", test::WaveMaker()
                                                 .format({.sampleRate = static_cast<std::uint32_t>(rate)})
                                                 .samples(samples)
                                                 .bytes())};
        sound.channelCount = 1;
        std::vector<SyncGroup> made;
        for (const char* name : {"A001C001.mov", "B001C001.mov", "A001C002.mov"}) {
            if (!test::NumberedClip{.pictures = 50, .encoding = "-c:v libx264 -g 12 -pix_fmt yuv420p"}.make(
                    folder_.path(name)))
                GTEST_SKIP() << "no encoder";
            MediaAsset video = test::video(name, "10:00:00:00", 2);
            video.url = FileURL{folder_.path(name)};
            SyncGroup clip = test::clip(std::move(video), sound);
            clip.audioMatches.front().syncOffsetSeconds = offset;
            clip.audioAnchorOffsetInAudioSeconds = 0.8;
            made.push_back(std::move(clip));
        }
        ids_ = {made[0].id, made[1].id, made[2].id};
        desktop_->controller().openStoredWork({{}, {}, SyncGroupList({made[0], made[1], made[2]})});
        QCoreApplication::processEvents();
        ASSERT_EQ(window_->results().table()->model()->rowCount(), 3);
    }

    ReviewViewModel& review() { return *desktop_->players().review(); }
    VideoEngine& engine() { return *review().engine(); }
    const SyncGroup& clip(std::size_t index) {
        return *desktop_->controller().work().syncGroups().find(ids_.at(index));
    }
    bool isOnScreen(std::size_t index) {
        return review().shows(ids_.at(index)) && window_->review().picture().canvas().hasPicture();
    }
    void open() {
        window_->results().select({ids_[0]});
        QTest::keyClick(window_->results().table(), Qt::Key_Return);
        ASSERT_TRUE(waitUntil([&] { return isOnScreen(0); }));
    }
    QString toast() {
        const auto all = window_->findChildren<QWidget*>(QStringLiteral("toast"), Qt::FindDirectChildrenOnly);
        const auto shown = std::ranges::find_if(all, [](const QWidget* one) { return !one->isHidden(); });
        return shown == all.end() ? QString() : (*shown)->accessibleName();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers held = {}) { QTest::keyClick(window_.get(), key, held); }

    test::TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<MainWindow> window_;
    std::vector<UUID> ids_;
};

} // namespace

TEST_F(ReviewTest, AClipIsNudgedLockedAndLeftByKeys) {
    open();
    constexpr int clapFrame = 30; // 0.8 + 0.4 s
    ASSERT_TRUE(waitUntil([&] { return engine().player()->picture()->number == clapFrame; }));
    EXPECT_FALSE(clip(0).isApproved) << "the press that opened it is over";
    press(Qt::Key_Period);
    press(Qt::Key_Comma, Qt::ShiftModifier);
    EXPECT_NEAR(clip(0).manualAudioOffsetSeconds, -9 / 25.0, 1e-9);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(clip(0).isLocked) << "once, although a menu has the same key";
    press(Qt::Key_BracketRight);
    EXPECT_TRUE(waitUntil([&] { return isOnScreen(1); }));
    press(Qt::Key_Return);
    EXPECT_TRUE(clip(1).isApproved);
    press(Qt::Key_BracketLeft);
    press(Qt::Key_BracketLeft);
    EXPECT_TRUE(review().shows(ids_[0])) << "nothing comes before the first";
    for (const bool isLocked : {true, false}) {
        if (isLocked) press(Qt::Key_Period);
        press(Qt::Key_L, Qt::ControlModifier);
        EXPECT_EQ(clip(0).isLocked, isLocked) << "one that was moved is locked where it lies";
        EXPECT_EQ(clip(0).lockedAtManualOffset,
                  isLocked ? std::optional(clip(0).manualAudioOffsetSeconds) : std::nullopt);
        EXPECT_TRUE(toast().contains(isLocked ? "is locked" : "is unlocked"));
    }
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(toast(), "") << "it is not true any more";
    for (int i = 0; i < 4; ++i) press(Qt::Key_Z, Qt::ControlModifier);

    ASSERT_TRUE(waitUntil([&] { return isOnScreen(0); }));
    press(Qt::Key_C);
    EXPECT_TRUE(engine().loop().isLooping);
    press(Qt::Key_Escape);
    EXPECT_FALSE(engine().loop().isLooping);
    EXPECT_TRUE(window_->review().isVisible()) << "Escape ends the loop first";
    press(Qt::Key_Escape);
    EXPECT_TRUE(window_->results().isVisible());
    EXPECT_FALSE(engine().transport().isLoaded);
    EXPECT_EQ(window_->results().selectedClips(), std::vector{ids_[0]});
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(clip(1).isApproved) << "what was decided is taken back from the list as well";
    open();
    press(Qt::Key_C);
    press(Qt::Key_Escape);
    EXPECT_FALSE(engine().loop().isLooping) << "the key that left the screen before is up again";
}

TEST_F(ReviewTest, AReturnPressedTwiceOpensAClipAndDecidesNothing) {
    window_->results().select({ids_[0]});
    const auto give = [&](QEvent::Type type, std::uint64_t milliseconds, bool isRepeat = false) {
        QWidget* to = window_->results().isVisible() ? static_cast<QWidget*>(window_->results().table())
                                                     : window_.get();
        QKeyEvent event(type, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), isRepeat);
        event.setTimestamp(milliseconds);
        QCoreApplication::sendEvent(to, &event);
    };
    give(QEvent::KeyPress, 1000);
    ASSERT_TRUE(waitUntil([&] { return isOnScreen(0); }));
    give(QEvent::KeyPress, 2000, true);
    give(QEvent::KeyRelease, 2010);
    give(QEvent::KeyPress, 1150);
    EXPECT_FALSE(clip(0).isApproved);
    give(QEvent::KeyRelease, 1200);
    give(QEvent::KeyPress, 4000);
    EXPECT_TRUE(clip(0).isApproved);
}

TEST_F(ReviewTest, TheStepsOfTheLoopAreButtonsWithTheirKeys) {
    open();
    auto* steps = window_->review().findChild<QWidget*>(QStringLiteral("steps"));
    const auto button = [&](const QString& begins) -> QPushButton& {
        for (auto* one : steps->findChildren<QPushButton*>())
            if (one->text().startsWith(begins)) return *one;
        throw std::logic_error("no such step");
    };
    const auto place = [&] { return steps->findChild<QLabel*>()->text(); };
    EXPECT_TRUE(button("+1").text().endsWith("Period") && button("Next").text().endsWith(']'));
    const QSize size = window_->size();
    window_->resize(1024, 640);
    QCoreApplication::processEvents();
    EXPECT_TRUE(button("+1").text().endsWith('.')) << "there is no room for a word";
    window_->resize(size);
    QCoreApplication::processEvents();
    button("+1").click();
    EXPECT_NEAR(clip(0).manualAudioOffsetSeconds, 1 / 25.0, 1e-9);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(button("Unlock").isChecked());
    button("Unlock").click();
    EXPECT_FALSE(clip(0).isLocked || button("Lock").isChecked());
    EXPECT_EQ(place(), "1 of 3");
    button("Next").click();
    button("Next").click();
    EXPECT_TRUE(review().shows(ids_[2]));
    EXPECT_EQ(place(), "3 of 3");
    EXPECT_FALSE(button("Next").isEnabled()) << "nothing comes behind the last";

    // From a filtered list, the steps go through the clips that it shows, until the search is cleared.
    press(Qt::Key_Escape);
    window_->results().search()->setText("a001");
    open();
    EXPECT_EQ(place(), "1 of 2");
    press(Qt::Key_BracketRight);
    EXPECT_TRUE(review().shows(ids_[2]));
    press(Qt::Key_BracketRight);
    QPushButton& all = button("Show All Clips");
    EXPECT_TRUE(all.isVisible());
    all.click();
    EXPECT_EQ(place(), "3 of 3");
    EXPECT_TRUE(all.isHidden()) << "all are listed";
}

TEST_F(ReviewTest, KeysOfTextAndOfTabbedControlsAreTheirs) {
    open();
    QLineEdit field(&window_->review());
    field.show();
    field.setFocus();
    ASSERT_EQ(QApplication::focusWidget(), &field);
    QTest::keyClicks(&field, "k.c");
    EXPECT_EQ(field.text(), "k.c");
    EXPECT_EQ(clip(0).manualAudioOffsetSeconds, 0);
    EXPECT_FALSE(engine().loop().isLooping || desktop_->players().keyboard().kHeld());
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return !field.hasFocus(); }));
    EXPECT_TRUE(window_->review().isVisible()) << "Escape leaves the field first";

    // The clip that is searched for is opened by keys, and Escape takes the words away.
    press(Qt::Key_F, Qt::ControlModifier);
    QLineEdit* search = window_->review().outline().search();
    ASSERT_EQ(QApplication::focusWidget(), search);
    QTest::keyClicks(search, "c002");
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return isOnScreen(2); })) << "the marked clip is the one that keys act on";
    window_->openReview(ids_[0]);
    EXPECT_TRUE(search->text().isEmpty()) << "it would hide the clip in view";
    EXPECT_TRUE(waitUntil([&] { return isOnScreen(0); }));
    press(Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(search, "c001");
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return !search->hasFocus(); })) << "the next keys are those of the review";
    EXPECT_TRUE(search->text().isEmpty() && window_->review().isVisible());

    QPushButton button(&window_->review());
    int presses = 0;
    QObject::connect(&button, &QPushButton::clicked, [&] { ++presses; });
    button.show();
    for (const Qt::FocusReason reason : {Qt::MouseFocusReason, Qt::TabFocusReason}) {
        field.setFocus();
        button.setFocus(reason);
        QTest::keyClick(&button, Qt::Key_Space);
    }
    EXPECT_EQ(presses, 1) << "by Tab it is meant, by a click it was used";
    EXPECT_TRUE(engine().transport().isPlaying);
    // A control that is disabled while it has the focus gives the keys to the review, not to the next
    // control.
    QPushButton greyed(&window_->review());
    greyed.show();
    QWidget::setTabOrder(&greyed, &button);
    greyed.setFocus(Qt::TabFocusReason);
    greyed.setEnabled(false);
    press(Qt::Key_Space);
    EXPECT_EQ(presses, 1);
    EXPECT_FALSE(engine().transport().isPlaying);
    EXPECT_TRUE(waitUntil([&] { return window_->review().hasFocus(); }));
    press(Qt::Key_Space);
    // A key that is held when the window loses the focus counts as released.
    QTest::keyPress(window_.get(), Qt::Key_K);
    QEvent away(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(window_.get(), &away);
    EXPECT_FALSE(desktop_->players().keyboard().kHeld());
}

TEST_F(ReviewTest, OnlyTextTakesAnInputMethod) {
    open();
    int fields = 0, others = 0;
    for (QWidget* one : window_->review().findChildren<QWidget*>()) {
        if (!one->isVisible() || !one->isEnabled() || one->focusPolicy() == Qt::NoFocus) continue;
        one->setFocus(Qt::TabFocusReason);
        QInputMethodQueryEvent asked(Qt::ImEnabled);
        QCoreApplication::sendEvent(QApplication::focusWidget(), &asked);
        const auto* choice = qobject_cast<QComboBox*>(one);
        const bool isText = one->inherits("QLineEdit") || one->inherits("QTextEdit") ||
                            one->inherits("QAbstractSpinBox") || (choice != nullptr && choice->isEditable());
        EXPECT_EQ(asked.value(Qt::ImEnabled).toBool(), isText)
            << one->metaObject()->className() << " " << one->accessibleName().toStdString();
        ++(isText ? fields : others);
    }
    EXPECT_TRUE(fields > 0 && others > 10) << fields << " and " << others;

    QLineEdit field(&window_->review());
    field.show();
    field.setFocus();
    QInputMethodEvent composing(QStringLiteral("か"), {});
    QCoreApplication::sendEvent(&field, &composing);
    press(Qt::Key_K); // a key that the input method does not use
    EXPECT_FALSE(desktop_->players().keyboard().kHeld() || engine().transport().isPlaying);
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("蚊"));
    QCoreApplication::sendEvent(&field, &composed);
    EXPECT_TRUE(field.text().contains(QStringLiteral("蚊")));
}

TEST_F(ReviewTest, LensAndFullscreenShowTheSamePicture) {
    open();
    press(Qt::Key_S);
    SyncLensView& lens = window_->review().picture().lens();
    ASSERT_TRUE(lens.isVisible());
    ASSERT_TRUE(waitUntil([&] { return !lens.isLoading(); }));
    const auto isLight = [&](double across) {
        const QImage seen = lens.grab().toImage();
        for (int y = 0; y < seen.height() / 2; ++y)
            if (qGray(seen.pixel(static_cast<int>(seen.width() * across), y)) > 150) return true;
        return false;
    };
    constexpr int message = 40;
    const auto below = [&] { return lens.grab(QRect(0, message, lens.width(), lens.height())).toImage(); };
    const QImage before = below();
    lens.setFreeTop(message);
    EXPECT_EQ(below(), before) << "a message over the top moves nothing";
    lens.setFreeTop(0);
    design::showToast(window_.get(), QStringLiteral("unlocked"));
    EXPECT_LT(window_->findChild<QWidget*>(QStringLiteral("toast"))->geometry().bottom(),
              lens.mapTo(window_.get(), QPoint(0, lens.height() * 3 / 4)).y())
        << "brief texts do not hide the sound";
    // Frame 31 has the bars of all five low bits, which are in the right half of a picture.
    EXPECT_TRUE(isLight(0.98)) << "the frame after the clap";
    constexpr double endOfMiddle = 1 / 3.0 + 0.98 / 3 - 0.015;
    EXPECT_FALSE(isLight(endOfMiddle));
    press(Qt::Key_Right);
    EXPECT_TRUE(waitUntil([&] { return isLight(endOfMiddle); })) << "the arrow keys move the pictures";
    press(Qt::Key_Left);
    EXPECT_TRUE(waitUntil([&] { return !isLight(endOfMiddle) && isLight(0.98); }));
    desktop_->controller().clips().setAudioAnchor(ids_[0], std::nullopt);
    const auto labels = window_->review().picture().findChildren<QLabel*>();
    EXPECT_TRUE(window_->review().picture().canvas().isVisible()) << "without a clap the picture is shown";
    EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* one) {
        return one->isVisible() && one->text().contains("Shift+C sets it there");
    }));
    desktop_->controller().clips().setAudioAnchor(ids_[0], 0.8);
    EXPECT_TRUE(lens.isVisible());
    press(Qt::Key_S);
    EXPECT_FALSE(lens.isVisible());

    press(Qt::Key_F);
    QPointer<QWidget> full;
    for (QWidget* top : QApplication::topLevelWidgets())
        if (FullscreenWindow::isOne(top) && top->isVisible()) full = top;
    ASSERT_NE(full, nullptr);
    full->activateWindow();
    ASSERT_TRUE(waitUntil([&] { return QApplication::activeWindow() == full; }));
    QTest::keyClick(full, Qt::Key_Space);
    EXPECT_TRUE(engine().transport().isPlaying);
    QTest::keyClick(full, Qt::Key_Period);
    EXPECT_NE(clip(0).manualAudioOffsetSeconds, 0) << "its other keys are those of the review";
    QCoreApplication::processEvents();
    QTest::keyClick(full, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(clip(0).manualAudioOffsetSeconds, 0) << "and of the menus";
    QTest::keyClick(full, Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(clip(0).isLocked);
    EXPECT_TRUE(engine().transport().isPlaying);
    auto* keys = full->findChild<QWidget*>(QStringLiteral("keyOverlay"));
    QTest::keyClick(full, Qt::Key_Question);
    EXPECT_TRUE(keys->isVisible());
    QTest::keyClick(full, Qt::Key_Question);
    EXPECT_FALSE(keys->isVisible());
    QTest::keyClick(full, Qt::Key_BracketRight);
    const auto says = [&](const char* name) {
        const auto all = full->findChildren<QWidget*>();
        return std::ranges::any_of(
            all, [&](const auto* one) { return one->accessibleName().startsWith(QLatin1String(name)); });
    };
    EXPECT_TRUE(waitUntil([&] { return says("B001C001"); })) << "the caption follows the clip";
    QTest::keyClick(full, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return full == nullptr; }));
    EXPECT_TRUE(window_->review().isVisible());
}

TEST_F(ReviewTest, TheEnlargedPictureIsTheNewest) {
    open();
    PictureCanvas& canvas = window_->review().picture().canvas();
    ASSERT_GT(canvas.width(), 300) << "the pictures are 256 wide";
    for (int i = 0; i < 7; ++i) press(Qt::Key_Right);
    constexpr int frame = 37;
    ASSERT_TRUE(
        waitUntil([&] { return engine().player()->picture()->number == frame && canvas.isSettled(); }));
    QImage seen = canvas.grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QSize fitted = QSize(256, 144).scaled(seen.size(), Qt::KeepAspectRatio);
    seen = seen.copy(
        QRect(QPoint((seen.width() - fitted.width()) / 2, (seen.height() - fitted.height()) / 2), fitted));
    const auto kept = std::make_shared<QImage>(seen);
    platform::Picture picture;
    picture.size = {seen.width(), seen.height()};
    picture.pixels = {kept, kept->constBits()};
    EXPECT_EQ(test::NumberedClip::numberIn(picture), frame);
}

TEST_F(ReviewTest, ARecordingIsHeardBeforeItIsAttached) {
    open();
    MediaAsset missing = *clip(0).audioMatches.front().audio;
    missing.id = UUID::random();
    missing.url = FileURL{folder_.path("gone.wav")};
    AttachSheet sheet(*desktop_, {{*clip(0).audioMatches.front().audio, "T01"}, {missing, "gone"}}, nullptr);
    UUID chosen;
    sheet.whenChosen = [&](const UUID& id) { chosen = id; };
    sheet.show();
    auto* list = sheet.findChild<QListWidget*>();
    const auto shows = [&](const QString& words) {
        const auto buttons = sheet.findChildren<QPushButton*>();
        return std::ranges::any_of(buttons, [&](const auto* one) { return one->text() == words; });
    };
    press(Qt::Key_Space);
    ASSERT_TRUE(engine().transport().isPlaying);
    list->setCurrentRow(0);
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_FALSE(engine().transport().isPlaying) << "one thing is heard at a time";
    EXPECT_TRUE(shows("Pause"));
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_TRUE(shows("Listen"));
    QTest::keyClick(list, Qt::Key_Space);
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_TRUE(waitUntil([&] {
        const auto labels = sheet.findChildren<QLabel*>();
        return std::ranges::any_of(labels,
                                   [](const auto* one) { return one->text().contains("cannot be read"); });
    }));
    EXPECT_TRUE(shows("Listen"));
    auto* search = sheet.findChild<QLineEdit*>();
    QTest::keyClick(search, Qt::Key_Up);
    EXPECT_EQ(list->currentRow(), 0) << "from the field, too";
    list->clearSelection();
    QTest::keyClick(search, Qt::Key_Down);
    EXPECT_TRUE(list->item(0)->isSelected()) << "Down leads to the row that Return would attach";
    QTest::keyClick(list, Qt::Key_X);
    EXPECT_EQ(search->text(), "x") << "typing goes on in the field";
    search->clear();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(chosen, missing.id);
}

TEST_F(ReviewTest, RecordingsAreChosenAndAttachedByKeys) {
    SyncGroup ambiguous = clip(2);
    MediaAsset second = *ambiguous.audioMatches.front().audio;
    second.id = UUID::random();
    second.url = FileURL{folder_.path("T02.wav")};
    second.filename = "T02.wav";
    ambiguous.audioMatches.emplace_back(second, 0, 2);
    ambiguous.matchStatus = MatchStatus::ambiguous(2);
    desktop_->controller().openStoredWork({{}, {}, SyncGroupList({clip(0), clip(1), ambiguous})});
    window_->openReview(ids_[2]);
    ASSERT_TRUE(waitUntil([&] { return isOnScreen(2); }));
    press(Qt::Key_T, Qt::ControlModifier);
    auto* sheet = window_->findChild<AttachSheet*>();
    ASSERT_TRUE(sheet != nullptr && sheet->isVisible());
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_TRUE(window_->review().isVisible());
    press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(clip(2).audioMatches.front().audio->filename, "T02.wav");
    EXPECT_EQ(clip(2).matchStatus.kind, MatchStatus::Kind::manual);
    QString refused;
    desktop_->showBriefly = [&](const QString& why) { refused = why; };
    press(Qt::Key_L, Qt::ControlModifier);
    press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(clip(2).audioMatches.front().audio->filename, "T02.wav") << "a locked clip stays";
    EXPECT_TRUE(refused.contains("Ctrl+L")) << "and says so";
    press(Qt::Key_T, Qt::ControlModifier);
    auto* box = window_->findChild<QMessageBox*>();
    ASSERT_TRUE(box != nullptr && box->isVisible());
    QTest::keyClick(box, Qt::Key_Return);
    EXPECT_FALSE(box->isVisible() || clip(2).isApproved) << "the key that was meant for the sheet";
    // Back to the state before the choice: locking the clip in view settles it.
    for (int i = 0; i < 2; ++i) desktop_->controller().undo();
    ASSERT_EQ(clip(2).matchStatus.kind, MatchStatus::Kind::ambiguous);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(clip(2).isLocked);
    EXPECT_EQ(clip(2).matchStatus.kind, MatchStatus::Kind::manual);
    desktop_->controller().undo();
    EXPECT_FALSE(clip(2).isLocked);
    EXPECT_EQ(clip(2).matchStatus.kind, MatchStatus::Kind::ambiguous) << "one step";
}

TEST_F(ReviewTest, ARecordingOfAnotherTimeIsPutUnderThePictureByItsClap) {
    SyncGroup silent = clip(2);
    MediaAsset late = *silent.audioMatches.front().audio;
    late.startTimecodeString = "10:01:00:00";
    silent.audioMatches.clear();
    silent.audioAnchorOffsetInAudioSeconds.reset();
    silent.matchStatus = MatchStatus::unmatched();
    desktop_->controller().openStoredWork({{}, {}, SyncGroupList({silent}), {WildTrack(late)}});
    window_->openReview(ids_[2]);
    ASSERT_TRUE(waitUntil([&] { return isOnScreen(2); }));
    QString said;
    desktop_->showBriefly = [&](const QString& what) { said = what; };
    press(Qt::Key_T, Qt::ControlModifier);
    auto* sheet = window_->findChild<AttachSheet*>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClick(sheet->findChild<QLineEdit*>(), Qt::Key_Return); // the first row is selected
    ASSERT_EQ(clip(2).audioMatches.size(), 1U);
    EXPECT_TRUE(said.contains("P moves the sound there")) << said.toStdString();
    ASSERT_TRUE(waitUntil([&] { return clip(2).audioAnchorOffsetInAudioSeconds.has_value(); }))
        << "the clap is searched for";
    review().putClapOnFrame();
    const ClipSound sound(clip(2));
    EXPECT_NEAR(sound.primaryOffsetSeconds() + *clip(2).audioAnchorOffsetInAudioSeconds,
                engine().playhead().seconds(), 0.04);
}

TEST_F(ReviewTest, AClipWithoutSoundTakesTheOffsetThatWasFoundForItsCard) {
    SyncGroup moved = clip(0), silent = clip(2);
    MediaAsset sound = *moved.primaryAudio();
    sound.startTimecodeString = "11:00:00:00";
    moved.audioMatches = {AudioMatch(sound, 3600, 0)};
    moved.manualAudioOffsetSeconds = -3600;
    silent.audioMatches.clear();
    silent.audioAnchorOffsetInAudioSeconds.reset();
    silent.matchStatus = MatchStatus::unmatched();
    SyncGroup next(silent.video, {}, MatchStatus::unmatched());
    next.video.url.path = folder_.path("A001C003.mov");
    desktop_->controller().openStoredWork({{}, {}, SyncGroupList({moved, silent, next})});
    window_->openReview(ids_[2]);
    ASSERT_TRUE(waitUntil([&] { return isOnScreen(2); }));
    auto& banner = static_cast<SiblingBanner&>(*window_->findChild<QFrame*>(QStringLiteral("siblingBanner")));
    ASSERT_TRUE(waitUntil([&] { return banner.isVisible(); }));
    EXPECT_TRUE(banner.text().contains("A001C001.mov was shifted -90000f")) << banner.text().toStdString();
    press(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(waitUntil([&] { return clip(2).audioMatches.size() == 1; }));
    EXPECT_NEAR(clip(2).manualAudioOffsetSeconds, -3600, 1e-9);
    EXPECT_TRUE(waitUntil([&] { return clip(2).audioAnchorOffsetInAudioSeconds.has_value(); }))
        << "its clap is searched for";
    const auto& work = desktop_->controller().work();
    const auto isSilent = [&](const UUID& id) { return work.syncGroups().find(id)->isMOS(); };
    EXPECT_TRUE(isSilent(next.id)) << "one clip at a time";
    EXPECT_EQ(work.undoState().undoActionName, "Apply Suggestions");
    desktop_->run("undo");
    EXPECT_TRUE(isSilent(ids_[2]));
    ASSERT_TRUE(waitUntil([&] { return banner.isVisible(); }));
    for (auto* one : banner.findChildren<QPushButton*>())
        if (one->text() == "Apply to 2 clips of the Card") QTest::mouseClick(one, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return !isSilent(ids_[2]) && !isSilent(next.id); }));
    desktop_->run("undo");
    EXPECT_TRUE(isSilent(ids_[2]) && isSilent(next.id)) << "in one step";
}

TEST_F(ReviewTest, ArrowsInTheListOpenTheClipThatTheyMark) {
    open();
    auto* list = window_->review().outline().findChild<QListView*>();
    list->setFocus(Qt::TabFocusReason);
    for (const auto& [key, shown] :
         {std::pair(Qt::Key_Down, 1U), std::pair(Qt::Key_Down, 2U), {Qt::Key_Up, 1U}}) {
        QTest::keyClick(list, key);
        EXPECT_TRUE(review().shows(ids_[shown])) << shown;
    }
    ASSERT_TRUE(waitUntil([&] { return isOnScreen(1); }));
    QTest::keyClick(list, Qt::Key_Space);
    EXPECT_TRUE(engine().transport().isPlaying);
    press(Qt::Key_3, Qt::AltModifier);
    EXPECT_TRUE(window_->results().isVisible());
    EXPECT_LT(window_->results().table()->model()->rowCount(), 3) << "the filter has a key";
}

TEST_F(ReviewTest, AClickInTheListAndASearchLeaveTheKeysToTheClipInView) {
    open();
    QListView& list = *window_->review().outline().list();
    QLineEdit& search = *window_->review().outline().search();
    const auto key = [](Qt::Key pressed) { QTest::keyClick(QApplication::focusWidget(), pressed); };
    const auto openOther = [&](const char* how) {
        window_->openReview(ids_[1]);
        const QModelIndex row = list.currentIndex();
        window_->openReview(ids_[0]);
        if (how == std::string_view("a click from the list")) list.setFocus(Qt::TabFocusReason);
        if (how != std::string_view("a search"))
            return QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(row).center());
        press(Qt::Key_F, Qt::ControlModifier);
        QTest::keyClicks(&search, "b001");
        key(Qt::Key_Enter);
        key(Qt::Key_Enter); // the second press of a double press
    };
    bool isApproved = false;
    for (const char* how : {"a click", "a click from the list", "a search"}) {
        openOther(how);
        EXPECT_TRUE(review().shows(ids_[1])) << how;
        for (const Qt::Key each : {Qt::Key_Return, Qt::Key_Down, Qt::Key_Up, Qt::Key_Left}) key(each);
        isApproved = !isApproved;
        EXPECT_EQ(clip(1).isApproved, isApproved) << how;
        EXPECT_TRUE(review().shows(ids_[1])) << how;
    }
    press(Qt::Key_F, Qt::ControlModifier);
    key(Qt::Key_Down);
    EXPECT_TRUE(list.hasFocus()) << "to move in the list by keys";
}

TEST_F(ReviewTest, HomeAndEndGoToTheFirstAndLastFrameAndTheClapIsPutOnOne) {
    open();
    const auto* timecode = window_->review().picture().findChild<QLabel*>(QStringLiteral("pictureTimecode"));
    press(Qt::Key_End);
    EXPECT_NEAR(engine().playhead().seconds(), 49 / 25.0, 1e-9);
    engine().seek(2);
    EXPECT_EQ(timecode->text(), "10:00:01:24") << "the picture that is shown after the end";
    press(Qt::Key_Home);
    EXPECT_EQ(engine().playhead().seconds(), 0);
    for (int i = 0; i < 5; ++i) press(Qt::Key_Right);
    press(Qt::Key_P);
    EXPECT_NEAR(clip(0).manualAudioOffsetSeconds, (5 - 30) / 25.0, 1e-9);
    press(Qt::Key_L, Qt::ControlModifier);
    press(Qt::Key_Right);
    press(Qt::Key_P);
    EXPECT_TRUE(toast().startsWith("Unlock sync")) << toast().toStdString();
}

TEST_F(ReviewTest, UnfoldedRowsOfChannelsComeBackAtTheNextStart) {
    open();
    for (const bool isUnfolded : {true, false}) {
        press(Qt::Key_A);
        window_.reset();
        if (isUnfolded) review().handleKeyAction(KeyAction::toggleAudioExpand); // folded, as at a start
        window_ = std::make_unique<MainWindow>(*desktop_);
        window_->show();
        window_->openReview(ids_[0]);
        EXPECT_EQ(review().isAudioExpanded(), isUnfolded);
    }
}

TEST_F(ReviewTest, WhatIsDecidedWithoutThePictureIsSaidInItsPlace) {
    std::filesystem::rename(folder_.path("A001C001.mov"), folder_.path("away"));
    window_->results().select({ids_[0]});
    QTest::keyClick(window_->results().table(), Qt::Key_Return);
    const auto says = [&](const QString& words) {
        return waitUntil([&] {
            for (const auto* one : window_->review().picture().findChildren<QLabel*>())
                if (one->isVisible() && one->text().contains(words)) return true;
            return false;
        });
    };
    EXPECT_TRUE(says("+0f, not locked"));
    press(Qt::Key_Period);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(says("+1f, locked"));
    std::filesystem::rename(folder_.path("away"), folder_.path("A001C001.mov"));
    EXPECT_TRUE(waitUntil([&] { return isOnScreen(0); })) << "it opens by itself";
}

TEST_F(ReviewTest, NoClapIsSearchedInSoundThatCannotBeRead) {
    desktop_->controller().clips().setAudioAnchor(ids_[0], std::nullopt);
    std::filesystem::remove(folder_.path("T01.wav"));
    open();
    const auto search = [&]() -> QPushButton& {
        for (auto* one : window_->review().findChildren<QPushButton*>())
            if (one->text() == "Detect Clap") return *one;
        throw std::logic_error("no button");
    };
    EXPECT_TRUE(waitUntil([&] { return search().toolTip().startsWith("The sound cannot be read"); }));
    EXPECT_FALSE(search().isEnabled());
}

TEST_F(ReviewTest, TheMenuBarGivesTheKeyboardBack) {
    window_->openReview(ids_[0]);
    ASSERT_TRUE(window_->review().hasFocus());
    // The state in which Qt leaves it after a second menu was opened with Alt.
    window_->menuBar()->setFocus(Qt::MenuBarFocusReason);
    ASSERT_FALSE(window_->review().hasFocus());
    QTest::keyClick(window_->menuBar(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return window_->review().hasFocus(); }));
    QAction* first = window_->menuBar()->actions().front();
    QTest::mouseClick(window_->menuBar(), Qt::LeftButton, {},
                      window_->menuBar()->actionGeometry(first).center());
    ASSERT_TRUE(first->menu()->isVisible());
    QTest::keyClick(first->menu(), Qt::Key_Escape);
    ASSERT_FALSE(first->menu()->isVisible());
    EXPECT_TRUE(waitUntil([&] { return window_->focusWidget() == &window_->review(); })) << "by one Escape";
}

TEST_F(ReviewTest, CamerasOfATakePlayTogether) {
    window_->openMulticam({ids_[0]});
    EXPECT_FALSE(desktop_->players().multicam()->isOpen()) << "one camera is nothing beside another";
    window_->results().select({ids_[0]});
    window_->openMulticam({ids_[0], ids_[1]});
    ClusterEngineBag& bag = desktop_->players().multicam()->bag();
    ASSERT_TRUE(waitUntil([&] {
        return std::ranges::all_of(bag.engines(), [](const auto& one) {
            return one.second->player() != nullptr && one.second->player()->picture();
        });
    }));
    for (const auto& [key, camera] : {std::pair(Qt::Key_2, 1U), std::pair(Qt::Key_1, 0U), {Qt::Key_3, 0U}}) {
        press(key);
        EXPECT_EQ(bag.audioSourceMemberID(), bag.memberLabels()[camera].first) << "there is no third camera";
    }
    press(Qt::Key_Space);
    EXPECT_TRUE(bag.isPlaying());
    press(Qt::Key_Space);
    EXPECT_FALSE(bag.isPlaying());
    press(Qt::Key_Escape);
    EXPECT_TRUE(window_->results().isVisible());
    EXPECT_TRUE(bag.engines().empty());
    EXPECT_EQ(window_->results().selectedClips(), std::vector{ids_[0]}) << "as it was selected";

    // From the list beside the cameras, one of them is opened.
    window_->openMulticam({ids_[0], ids_[1]});
    QListView* shown = nullptr;
    for (auto* outline : window_->findChildren<QWidget*>(QStringLiteral("outline")))
        if (outline->isVisible()) shown = static_cast<OutlineView*>(outline)->list();
    ASSERT_NE(shown, nullptr);
    QTest::mouseClick(shown->viewport(), Qt::LeftButton, {},
                      shown->visualRect(shown->model()->index(shown->model()->rowCount() - 1, 0)).center());
    EXPECT_TRUE(window_->review().isVisible());
    EXPECT_TRUE(bag.engines().empty()) << "the cameras beside each other are left";
    const auto clip = window_->review().clip();
    window_->openMulticam({ids_[0], ids_[1]});
    press(Qt::Key_Escape);
    EXPECT_TRUE(window_->review().isVisible() && window_->review().clip() == clip) << "where it came from";
    window_->openMulticam({ids_[0], ids_[1]});
    QString refused;
    desktop_->showBriefly = [&](const QString& why) { refused = why; };
    press(Qt::Key_Period);
    EXPECT_TRUE(refused.contains("one camera"));
    const auto group = [this](std::size_t index) -> const SyncGroup& { return this->clip(index); };
    press(Qt::Key_2);
    press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(group(1).isLocked && !group(0).isLocked) << "the camera that is heard";
    press(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(group(1).isApproved && !group(0).isApproved);
    press(Qt::Key_BracketRight);
    EXPECT_TRUE(window_->review().isVisible() && window_->review().clip() == ids_[2]) << "it has one camera";
    window_->openMulticam({ids_[0], ids_[1]});
    window_->openMulticam({ids_[1], ids_[0]});
    press(Qt::Key_Escape);
    EXPECT_EQ(window_->review().clip(), ids_[1]) << "of the take that was seen last";
    window_->openMulticam({ids_[0], ids_[1]});
    desktop_->players().multicam()->load({ids_[2]}); // both cameras go at once, and say so to the screen
    EXPECT_EQ(bag.engines().size(), 1U);
}

TEST_F(ReviewTest, AStepBeyondASearchSaysThatItEnds) {
    QTest::keyClicks(window_->results().search(), "C001");
    open();
    press(Qt::Key_BracketRight);
    ASSERT_TRUE(review().shows(ids_[1]));
    EXPECT_EQ(toast(), "");
    for (const auto& [key, clip, words] : {std::tuple(Qt::Key_BracketRight, 1U, "This is the last clip"),
                                           std::tuple(Qt::Key_BracketLeft, 0U, "This is the first clip")}) {
        if (!review().shows(ids_[clip])) press(key);
        press(key);
        EXPECT_TRUE(review().shows(ids_[clip]));
        EXPECT_TRUE(toast().startsWith(words)) << toast().toStdString();
    }
}

TEST_F(ReviewTest, EveryActionHasAnEntryThatNamesItsKey) {
    desktop_->players().shortcuts()->setBinding({"x", ModifierSet::command}, ShortcutAction::clapCheck);
    QStringList entries;
    for (const QMenu* menu : window_->menuBar()->findChildren<QMenu*>())
        for (const QAction* action : menu->actions())
            if (action->isVisible()) entries << action->text();
    for (const ShortcutAction action : allShortcutActions()) {
        if (!keyAction(action)) continue; // those of the menus always have entries
        const QString name = text(label(action));
        EXPECT_EQ(
            entries.filter(QRegularExpression("^" + QRegularExpression::escape(name) + "(\t|$)")).size(), 1)
            << name.toStdString();
    }
    EXPECT_TRUE(waitUntil([&] {
        QStringList now;
        for (const QMenu* menu : window_->menuBar()->findChildren<QMenu*>())
            for (const QAction* action : menu->actions()) now << action->text();
        return now.contains("Clap Check Loop\tCtrl+X");
    }));
}

} // namespace orvane::views
