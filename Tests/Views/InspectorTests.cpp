#include "MediaFactory/SmallShoot.h"
#include "OrvaneDesignKit/EntryField.h"
#include "OrvaneDesignKit/FoldableSection.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Review/ReviewViewModel.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorView.h"
#include "OrvaneSyncApp/Views/Inspector/OutlineView.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/Review/KeyOverlay.h"
#include "OrvaneSyncApp/Views/Review/SiblingBanner.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Views/Application.h"

#include <QCheckBox>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <algorithm>

namespace orvane::views {
namespace {

using test::waitUntil;

constexpr int narrowest = 260;

class InspectorTest : public testing::Test {
  protected:
    InspectorTest() {
        test::application();
        design::keptState::remove({});
        registerStandardDefaults(*settings_);
        test::makeSmallShoot(folder_.path("shoot"));
        Desktop::Dependencies dependencies;
        dependencies.mainThread = qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        desktop_ = std::make_unique<Desktop>(std::move(dependencies));
        desktop_->controller().scan().setVideoFolderURL(FileURL{folder_.path("shoot/camera")});
        desktop_->controller().scan().setAudioFolderURL(FileURL{folder_.path("shoot/sound")});
        const auto scan = desktop_->controller().scan().startScan();
        EXPECT_TRUE(waitUntil([&] { return scan.isDone(); }));
        review_ = desktop_->players().review();
        inspector_ = std::make_unique<InspectorView>(*desktop_, review_);
        inspector_->resize(narrowest, 900);
        inspector_->show();
        inspector_->activateWindow();
    }
    static void serve() { QCoreApplication::processEvents(); }

    const SyncGroup& clip(std::string_view file) {
        for (const SyncGroup& group : desktop_->controller().work().syncGroups())
            if (group.video.filename.starts_with(file)) return group;
        throw std::logic_error("no such clip");
    }
    void open(std::string_view file) {
        review_->loadGroup(clip(file).id);
        serve();
    }
    template <class Widget>
    Widget& named(const QString& accessibleName, QWidget* in = nullptr) {
        for (auto* one : (in == nullptr ? inspector_.get() : in)->findChildren<Widget*>())
            if (one->accessibleName() == accessibleName) return *one;
        throw std::logic_error("no " + accessibleName.toStdString());
    }
    QPushButton& button(const QString& text, QWidget* in = nullptr) {
        for (auto* one : (in == nullptr ? inspector_.get() : in)->findChildren<QPushButton*>())
            if (one->text() == text && !one->isHidden()) return *one;
        throw std::logic_error("no button " + text.toStdString());
    }
    void type(QLineEdit& line, const QString& text) {
        line.setFocus();
        line.selectAll();
        QTest::keyClicks(&line, text);
    }
    QString undoName() {
        return views::text(desktop_->controller().work().undoState().undoActionName.value_or(""));
    }

    test::TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<Desktop> desktop_;
    std::shared_ptr<ReviewViewModel> review_;
    std::unique_ptr<InspectorView> inspector_;
};

TEST_F(InspectorTest, aRightClickInTheOutlineActsOnAClipWithoutOpeningIt) {
    bool isOpened = false;
    OutlineView outline(
        *desktop_, [&](const UUID&) { isOpened = true; }, [] {});
    outline.show();
    QTimer::singleShot(0, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_NE(menu, nullptr);
        for (QAction* entry : menu->actions())
            if (entry->text() == text(desktop_->command("toggleExcludedFromExport").title)) entry->trigger();
        menu->close();
    });
    QListView& list = *outline.list();
    const QPoint at = list.visualRect(list.model()->index(list.model()->rowCount() - 1, 0)).center();
    QContextMenuEvent click(QContextMenuEvent::Mouse, at, list.viewport()->mapToGlobal(at));
    QApplication::sendEvent(list.viewport(), &click);
    EXPECT_EQ(
        std::ranges::count_if(desktop_->controller().work().syncGroups(), &SyncGroup::isExcludedFromExport),
        1);
    EXPECT_FALSE(isOpened);
}

TEST_F(InspectorTest, lockAllIsOnlyForATakeOfSeveralCamerasAlsoAfterAnotherDecision) {
    const struct {
        const char* file;
        bool isAlone;
    } cases[] = {{"A001C003", true}, {"A001C001", false}};
    for (const auto& [file, isAlone] : cases) {
        SCOPED_TRACE(file);
        open(file);
        QPushButton& lockAll = button("Lock All Cams in Cluster");
        EXPECT_TRUE(waitUntil([&, alone = isAlone] { return lockAll.isEnabled() != alone; }));
        for (const char* decision : {"toggleApproved", "toggleLocked"}) {
            desktop_->runForClips(decision, {clip(file).id});
            serve();
            EXPECT_NE(lockAll.isEnabled(), isAlone) << decision;
        }
    }
}

TEST_F(InspectorTest, fieldsCommitOnReturnRestoreOnEscapeAndSayWhatIsWrong) {
    open("A001C001");
    auto& frames = named<QLineEdit>("Offset in frames");
    type(frames, "3");
    EXPECT_EQ(clip("A001C001").manualAudioOffsetSeconds, 0);
    QTest::keyClick(&frames, Qt::Key_Return);
    EXPECT_NEAR(clip("A001C001").manualAudioOffsetSeconds, 0.12, 1e-9);
    serve();
    EXPECT_EQ(frames.text(), "+3");
    EXPECT_EQ(named<QLineEdit>("Offset in seconds").text(), "+0.120");
    EXPECT_EQ(undoName(), "Adjust Audio Offset");
    QTest::mouseClick(&named<QPushButton>("Offset in frames: 1 frame less"), Qt::LeftButton);
    EXPECT_NEAR(clip("A001C001").manualAudioOffsetSeconds, 0.08, 1e-9);
    serve();
    QTest::keyClick(&frames, Qt::Key_Down);
    QTest::keyClick(&frames, Qt::Key_Up);
    QTest::keyClick(&frames, Qt::Key_Up);
    EXPECT_NEAR(clip("A001C001").manualAudioOffsetSeconds, 0.12, 1e-9);
    QTest::keyClick(&frames, Qt::Key_Down);
    serve();

    auto* field = static_cast<design::EntryField*>(frames.parentWidget());
    type(frames, "half");
    QTest::keyClick(&frames, Qt::Key_Return);
    EXPECT_TRUE(std::ranges::any_of(field->findChildren<QLabel*>(), [&](const QLabel* one) {
        return one->isVisibleTo(field) && !one->text().isEmpty() && one->text() == field->problem();
    }));
    EXPECT_NEAR(clip("A001C001").manualAudioOffsetSeconds, 0.08, 1e-9);
    QKeyEvent escape(QEvent::ShortcutOverride, Qt::Key_Escape, Qt::NoModifier);
    escape.ignore();
    QCoreApplication::sendEvent(&frames, &escape);
    EXPECT_TRUE(escape.isAccepted()) << "the field needs the key, so it does not leave the clip";
    QTest::keyClick(&frames, Qt::Key_Escape);
    EXPECT_TRUE(field->problem().isEmpty());
    EXPECT_EQ(frames.text(), "+2");

    auto& name = named<QLineEdit>("Clip name");
    type(name, "Hero");
    QTest::keyClick(&name, Qt::Key_Up); // there is nothing to step
    const auto labels = inspector_->findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [](QLabel* one) {
        return one->text() == "In Final Cut Pro: Hero Cam A";
    })) << "what is exported can be seen before it is decided";
    named<QLineEdit>("Offset in seconds").setFocus(); // leaving a field also applies it
    EXPECT_EQ(clip("A001C001").manualClipName, "Hero");
    desktop_->run("undo");
    EXPECT_FALSE(clip("A001C001").manualClipName);
    serve();

    // The field begins with the present name, without the camera; if it is left unchanged, the name stays
    // automatic.
    name.setFocus();
    serve();
    EXPECT_EQ(name.selectedText(), name.placeholderText());
    EXPECT_FALSE(name.placeholderText().isEmpty() || name.placeholderText().contains("Cam"));
    open("A001C003");
    serve();
    EXPECT_EQ(name.selectedText(), name.placeholderText());
    name.clearFocus();
    EXPECT_EQ(name.text(), QString());
    EXPECT_FALSE(clip("A001C003").manualClipName);
}

TEST_F(InspectorTest, boxesAndChoicesAreCommandsAndSectionsFoldForGood) {
    open("A001C001");
    auto& method = named<QComboBox>("Sync Method");
    method.setCurrentIndex(2);
    Q_EMIT method.activated(2);
    EXPECT_EQ(clip("A001C001").syncMethod, SyncMethod::manual);
    QTest::mouseClick(&button("Lock"), Qt::LeftButton);
    EXPECT_TRUE(clip("A001C001").isLocked);
    serve();
    EXPECT_FALSE(button("Attach…").isEnabled()) << "a locked clip keeps its recordings";
    EXPECT_TRUE(named<QLineEdit>("Offset in frames").isEnabled()) << "and may be nudged all the same";
    QCheckBox* export2 = nullptr;
    for (auto* box : inspector_->findChildren<QCheckBox*>())
        if (box->accessibleName().startsWith("Export channel 2")) export2 = box;
    ASSERT_NE(export2, nullptr);
    export2->click();
    EXPECT_TRUE(clip("A001C001").hasManualTrackEdits());
    EXPECT_EQ(undoName(), "Toggle Audio Track");

    auto* section = inspector_->findChild<QFrame*>("inspector-notes");
    auto* folding = static_cast<design::FoldableSection*>(section);
    ASSERT_FALSE(folding->isFolded());
    folding->findChild<QPushButton*>()->click();
    const InspectorView again(*desktop_, review_);
    EXPECT_TRUE(
        static_cast<design::FoldableSection*>(again.findChild<QFrame*>("inspector-notes"))->isFolded());
}

TEST_F(InspectorTest, whatWasUsedStaysInItsPlaceWhereSectionsAboveItGrow) {
    open("A001C001");
    auto* scroll = inspector_->findChild<QScrollArea*>();
    QPushButton& used = button("Measure Loudness");
    scroll->ensureWidgetVisible(&used);
    used.setFocus();
    serve();
    const auto at = [&] { return used.mapTo(inspector_.get(), QPoint()).y(); };
    const int before = at(), scrolled = scroll->verticalScrollBar()->value();
    const MediaAsset roomTone = desktop_->controller().work().wildTracks()[0].audio;
    desktop_->controller().recordings().attachAudioToGroup(clip("A001C001").id, roomTone);
    ASSERT_TRUE(waitUntil([&] { return scroll->verticalScrollBar()->value() != scrolled; }));
    EXPECT_EQ(at(), before);
}

TEST_F(InspectorTest, aButtonThatAClickDisablesScrollsNothing) {
    open("A001C001");
    desktop_->controller().clips().setAudioAnchor(clip("A001C001").id, 0.5);
    inspector_->resize(320, 400);
    serve();
    auto* scroll = inspector_->findChild<QScrollArea*>();
    QPushButton& clear = button("Clear");
    scroll->ensureWidgetVisible(&clear);
    const int before = scroll->verticalScrollBar()->value();
    const QPushButton& set = button("Update Clap Point");
    QTest::mouseClick(&clear, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return !clear.isEnabled(); }));
    EXPECT_EQ(set.text(), "Set Clap Point");
    EXPECT_EQ(scroll->verticalScrollBar()->value(), before);
}

TEST_F(InspectorTest, theControlsOfTheSyncKeepTheirPlaces) {
    inspector_->resize(320, 900);
    const auto places = [&] {
        serve();
        std::vector<QPoint> all{named<QLineEdit>("Offset in frames").mapTo(inspector_.get(), QPoint())};
        for (const char* text : {"Go To", "Clear", "Mark Synced", "Lock All Cams in Cluster"})
            all.push_back(button(text).mapTo(inspector_.get(), QPoint()));
        return all;
    };
    open("A001C001");
    const std::vector<QPoint> usual = places();
    for (const char* file : {"A001C001", "A001C002", "A001C003"}) {
        open(file);
        EXPECT_EQ(places(), usual) << file;
        const UUID id = clip(file).id;
        desktop_->runForClips("toggleLocked", {id});
        EXPECT_EQ(places(), usual) << file << " locked";
        desktop_->controller().clips().adjustAudioOffset(id, 0.05);
        EXPECT_EQ(places(), usual) << file << " moved since, by a part of a frame";
        if (!clip(file).isMOS()) {
            EXPECT_TRUE(button("Lock at This Offset").isVisible());
            auto* reason = inspector_->findChild<QPushButton*>("reason");
            EXPECT_TRUE(reason->toolTip().contains("moved since"));
            reason->click();
            EXPECT_EQ(places(), usual) << "there is no more to show";
        }
    }
}

TEST_F(InspectorTest, nothingIsCutAtAnyWidthAndEveryControlHasAName) {
    const auto faults = [&] {
        QStringList all;
        for (auto* one : inspector_->findChildren<QWidget*>()) {
            if (!one->isVisible()) continue;
            const auto* label = qobject_cast<QLabel*>(one);
            if (label && label->wordWrap() && one->height() < one->heightForWidth(one->width()))
                all << "too low: " + label->text();
            if (one->focusPolicy() == Qt::NoFocus) continue;
            const auto* pressed = qobject_cast<QAbstractButton*>(one);
            const QString name = pressed ? one->accessibleName() + pressed->text() : one->accessibleName();
            if (name.isEmpty()) all << QString("no name: ") + one->metaObject()->className();
            const int right = one->mapTo(inspector_.get(), QPoint(one->width(), 0)).x();
            if (right > inspector_->width()) all << "too wide: " + name;
            if (one->geometry().bottom() > one->parentWidget()->height())
                all << QString("cut off: %1 at %2 of %3")
                           .arg(name)
                           .arg(one->geometry().bottom())
                           .arg(one->parentWidget()->height());
        }
        return all;
    };
    for (const int width : {narrowest, 300, 360})
        for (const char* file : {"A001C001", "A001C002", "A001C003"}) {
            inspector_->resize(width, 900);
            open(file);
            EXPECT_TRUE(QTest::qWaitFor([&] { return faults().isEmpty(); }, 1000))
                << width << file << faults().join("\n").toStdString();
        }
}

TEST_F(InspectorTest, anotherClipIsShownFromItsTopUnlessAFieldIsInUse) {
    inspector_->resize(narrowest, 300);
    open("A001C001");
    QScrollBar& bar = *inspector_->findChild<QScrollArea*>()->verticalScrollBar();
    for (const bool isFieldInUse : {false, true}) {
        bar.setValue(bar.maximum());
        ASSERT_GT(bar.value(), 0);
        auto& field = named<QLineEdit>("Clip name");
        field.setFocus();
        if (!isFieldInUse) field.clearFocus();
        open(isFieldInUse ? "A001C003" : "A001C002");
        EXPECT_EQ(bar.value() > 0, isFieldInUse);
    }
}

TEST_F(InspectorTest, theOutlineChoosesMarksAndGoesBack) {
    std::optional<UUID> chosen;
    bool isLeft = false;
    OutlineView outline(
        *desktop_, [&](const UUID& id) { chosen = id; }, [&] { isLeft = true; });
    std::vector<UUID> take;
    outline.openTake = [&](std::vector<UUID> clips) { take = std::move(clips); };
    outline.resize(220, 600);
    outline.show();
    const auto click = [&](int row) {
        const QRect place = outline.list()->visualRect(outline.list()->model()->index(row, 0));
        QTest::mouseClick(outline.list()->viewport(), Qt::LeftButton, {}, place.center());
    };
    ASSERT_EQ(outline.list()->model()->rowCount(), 5) << "a take of two cameras, and two other clips";
    click(0);
    EXPECT_EQ(take, (std::vector{clip("A001C001").id, clip("B001C001").id}));
    click(2);
    EXPECT_EQ(chosen, clip("B001C001").id);
    chosen.reset();
    outline.select(clip("A001C001").id);
    EXPECT_EQ(outline.list()->currentIndex().row(), 1);
    EXPECT_FALSE(chosen);
    int painted = 0;
    QObject::connect(outline.list()->model(), &QAbstractItemModel::dataChanged, outline.list(),
                     [&] { ++painted; });
    outline.grab();
    JSON arguments = JSON::object();
    arguments.set("groupID", clip("A001C003").id.text());
    desktop_->run("toggleApproved", arguments);
    EXPECT_EQ(painted, 1) << "only the row of the clip";

    // A name that moves the clip into the take above does not change what comes next.
    ASSERT_EQ(outline.neighbour(clip("B001C001").id, 1), clip("A001C002").id);
    outline.select(clip("A001C002").id);
    const auto next = outline.neighbour(clip("A001C002").id, 1);
    ASSERT_TRUE(next);
    desktop_->controller().clips().setManualClipName(clip("A001C002").id, "12A-3");
    EXPECT_LT(outline.list()->currentIndex().row(), 4);
    EXPECT_EQ(outline.neighbour(clip("A001C002").id, 1), next);
    outline.search()->setText("12A");
    EXPECT_NE(outline.neighbour(clip("A001C002").id, 1), next) << "of the clips that are listed now";
    button("‹  Results", &outline).click();
    EXPECT_TRUE(isLeft);
}

TEST_F(InspectorTest, aSiblingsMoveIsOfferedAppliedAndDismissed) {
    SiblingBanner banner(*desktop_, review_);
    const UUID a = clip("A001C001").id, b = clip("B001C001").id;
    open("B001C001");
    EXPECT_TRUE(banner.isHidden());
    desktop_->controller().clips().adjustAudioOffset(a, 0.12);
    serve();
    EXPECT_FALSE(banner.isHidden());
    EXPECT_EQ(banner.text(), "Cam A was shifted +3f — apply the same to this cam?");
    banner.findChildren<QPushButton*>().first()->click();
    EXPECT_NEAR(clip("B001C001").manualAudioOffsetSeconds, 0.12, 1e-9);
    serve();
    EXPECT_TRUE(banner.isHidden());
    desktop_->controller().clips().adjustAudioOffset(a, 0.04);
    serve();
    EXPECT_FALSE(banner.isHidden());
    named<QPushButton>("Dismiss suggestion", &banner).click();
    EXPECT_TRUE(banner.isHidden());
    EXPECT_NE(a, b);
}

TEST_F(InspectorTest, aQuestionMarkShowsTheKeysAndAnyKeyClosesThem) {
    QWidget screen;
    auto* line = new QLineEdit(&screen);
    screen.resize(1200, 700);
    KeyOverlay overlay(&screen, [this] {
        return keyOverview(desktop_->context().shortcuts()->bindings(), situationOf(*desktop_, *review_));
    });
    screen.show();
    screen.activateWindow();
    ASSERT_TRUE(waitUntil([&] { return QApplication::activeWindow() == &screen; }));
    line->setFocus();
    QTest::keyClicks(line, "?");
    EXPECT_FALSE(overlay.isVisible()) << "a text field wins";
    EXPECT_EQ(line->text(), "?");
    line->clearFocus();
    QTest::keyClick(&screen, Qt::Key_Question, Qt::ShiftModifier);
    ASSERT_TRUE(overlay.isVisible());
    EXPECT_FALSE(overlay.accessibleText().contains("Lock Current Clip")) << "there is no clip";
    open("A001C001");
    line->setFocus();
    QTest::keyClicks(line, "x");
    EXPECT_FALSE(overlay.isVisible());
    EXPECT_EQ(line->text(), "?") << "the key that closes does nothing else";
    overlay.open();
    EXPECT_TRUE(overlay.accessibleText().contains("Lock Current Clip") &&
                overlay.accessibleText().contains("Return: Mark Synced"));
}

/// Writes pictures for people to look at, if ORVANE_PICTURES names a folder.
TEST_F(InspectorTest, canBeLookedAt) {
    const QString folder = qEnvironmentVariable("ORVANE_PICTURES");
    if (folder.isEmpty()) GTEST_SKIP() << "nobody wants to look";
    QDir().mkpath(folder);
    const auto grab = [&](QWidget& widget, const QString& name) {
        serve();
        ASSERT_TRUE(widget.grab().save(QDir(folder).filePath(name + ".png")));
    };
    const auto whole = [&](int width) {
        auto* scroll = inspector_->findChild<QScrollArea*>();
        inspector_->resize(width, 600);
        serve();
        inspector_->resize(width, scroll->widget()->heightForWidth(width - 12) + 20);
    };
    desktop_->controller().clips().adjustAudioOffset(clip("A001C001").id, 0.12);
    for (const char* file : {"A001C001", "A001C002", "A001C003"})
        for (const int width : {narrowest, 360}) {
            open(file);
            whole(width);
            grab(*inspector_, QStringLiteral("inspector-%1-%2").arg(file).arg(width));
        }
    // Adds what an analysis and an open choice show.
    std::vector<SyncGroup> groups(desktop_->controller().work().syncGroups().begin(),
                                  desktop_->controller().work().syncGroups().end());
    for (SyncGroup& group : groups)
        if (group.video.filename.starts_with("A001C001")) {
            const AudioMatch& match = group.audioMatches.front();
            MediaAsset other(FileURL{"/cards/SECOND_RECORDER_T01.WAV"}, AssetKind::audio);
            other.durationSeconds = match.audio->durationSeconds;
            const AudioMatch second(other, match.syncOffsetSeconds, match.overlapDurationSeconds);
            group.audioMatches.push_back(second);
            group.matchStatus = MatchStatus::ambiguous(2);
        }
    desktop_->controller().openStoredWork({{}, {}, SyncGroupList(std::move(groups))});
    const auto analysis =
        desktop_->controller().smartAudio().runSmartAudioForGroup(clip("A001C001").id, true);
    EXPECT_TRUE(waitUntil([&] { return analysis.isDone(); }));
    open("A001C001");
    whole(320);
    grab(*inspector_, "inspector-ambiguous-320");
    OutlineView outline(
        *desktop_, [](const UUID&) {}, [] {});
    outline.resize(240, 500);
    outline.select(clip("B001C001").id);
    outline.show();
    grab(outline, "outline");
    QWidget screen;
    screen.resize(1440, 800);
    KeyOverlay overlay(&screen, [this] {
        return keyOverview(desktop_->context().shortcuts()->bindings(), situationOf(*desktop_, *review_));
    });
    screen.show();
    overlay.open();
    grab(screen, "keys-1440");
    screen.resize(1024, 700);
    overlay.open();
    grab(screen, "keys-1024");
    open("B001C001");
    SiblingBanner banner(*desktop_, review_);
    banner.resize(600, banner.sizeHint().height());
    banner.show();
    grab(banner, "sibling");
}

} // namespace
} // namespace orvane::views
