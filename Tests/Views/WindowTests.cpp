#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Review/ReviewActions.h"
#include "OrvaneSyncApp/Views/Review/ReviewView.h"
#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/WorkBar.h"
#include "Support/Assets.h"
#include "Views/ShootWindow.h"

#include <QAbstractItemDelegate>
#include <QAbstractScrollArea>
#include <QAction>
#include <QInputDialog>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <filesystem>

namespace orvane::views {

namespace {

using test::waitUntil;

class WindowTest : public testing::Test, protected test::ShootWindow {};

/// A screen that shows nothing.
class EmptyScreen final : public WorkScreen {
  public:
    using WorkScreen::WorkScreen;
    void open(const std::vector<UUID>& clips) override { clips_ = clips; }
    bool isOpen() const override { return !clips_.empty(); }
    std::vector<UUID> clips() const override { return clips_; }
    QLineEdit* search() const override { return nullptr; }
    void leave() override { clips_.clear(); }
    void loseClips() {
        clips_.clear();
        noteClips();
    }

  private:
    std::vector<UUID> clips_;
};

} // namespace

TEST_F(WindowTest, ListensToTheCardsAndSaysWhatCameOfIt) {
    auto* listen = window_->findChild<QAction*>("listen");
    ASSERT_NE(listen, nullptr);
    const auto said = [&] { return bannerText(); };
    EXPECT_FALSE(listen->isEnabled()) << "there is no clip";
    auto* cancel = window_->findChild<QWidget*>("work")->findChild<QToolButton*>();
    scan();
    for (const bool isStopped : {false, true}) {
        ASSERT_TRUE(waitUntil([&] { return listen->isEnabled(); }));
        listen->trigger();
        const bool isUnderWay = desktop_->controller().derivedDoubts().listening().has_value();
        EXPECT_EQ(listen->isEnabled(), !isUnderWay) << "one at a time";
        if (isStopped && isUnderWay) cancel->click();
        ASSERT_TRUE(waitUntil([&] { return !desktop_->controller().derivedDoubts().listening(); }));
        if (isStopped) break;
        ASSERT_TRUE(waitUntil([&] { return !said().isEmpty(); }));
        EXPECT_TRUE(said().contains("to listen to") || said().contains("sound")) << said().toStdString();
    }
    EXPECT_TRUE(waitUntil([&] { return listen->isEnabled(); }));
}

TEST_F(WindowTest, ShowsScansAndDecidesByKeys) {
    auto* pages = window_->findChild<QStackedWidget*>();
    EXPECT_EQ(pages->currentIndex(), 0) << "folders are chosen first";
    scan();
    ASSERT_EQ(table().model()->rowCount(), 4);
    EXPECT_EQ(pages->currentIndex(), 2);

    // Two cameras with one recording are next to each other, and the first row folds the other away.
    const int first = rowOf("A001C001");
    ASSERT_EQ(rowOf("B001C001"), first + 1);
    EXPECT_TRUE(cell(first, 5).contains("DAY1_T01.WAV"));
    EXPECT_TRUE(std::ranges::any_of(window_->results().findChildren<QPushButton*>(), [&](const auto* one) {
        return one->text() == "Matched  3" && one->toolTip().startsWith("2 with sound and 1 MOS");
    }));
    ASSERT_TRUE(waitUntil([&] { return desktop_->controller().derivedDoubts().derive().isDone(); }));
    QCoreApplication::processEvents(); // the doubts are shown above the list
    const QPoint before = table().mapTo(window_.get(), QPoint());
    desktop_->run("noSuchCommand");
    EXPECT_TRUE(bannerText().contains("noSuchCommand"));
    QCoreApplication::processEvents();
    EXPECT_EQ(table().mapTo(window_.get(), QPoint()), before) << "a banner moves no row under the pointer";
    const QRect name = table().visualRect(table().model()->index(first, 0));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, name.topLeft() + QPoint(12, name.height() / 2));
    EXPECT_EQ(table().model()->rowCount(), 3);
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, name.topLeft() + QPoint(12, name.height() / 2));
    ASSERT_EQ(table().model()->rowCount(), 4);

    // A change of several clips is one undo step.
    table().selectAll();
    table().selectionModel()->setCurrentIndex(table().model()->index(2, 3), QItemSelectionModel::NoUpdate);
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(table().currentIndex(), table().model()->index(2, 0)) << "keys go on from the row they were on";
    EXPECT_TRUE(clip("A001C001").isApproved && clip("A001C003").isApproved);
    EXPECT_EQ(window_->results().selectedClips().size(), 4U) << "the selection stays";
    EXPECT_EQ(table().selectionModel()->selection().size(), 1) << "each range costs time at each question";
    EXPECT_TRUE(std::ranges::any_of(window_->statusBar()->findChildren<QLabel*>(), [](const QLabel* label) {
        return label->text().startsWith("4 selected · 4 clips");
    }));
    QCoreApplication::processEvents(); // menus are updated in the next turn of the loop
    QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(clip("A001C001").isApproved || clip("A001C003").isApproved);

    // Home and End go to the first and the last row; with Shift all rows between are selected.
    for (const auto& [key, modifiers, row, selected] :
         {std::tuple(Qt::Key_End, Qt::NoModifier, 3, 1U), std::tuple(Qt::Key_Home, Qt::NoModifier, 0, 1U),
          std::tuple(Qt::Key_End, Qt::ShiftModifier, 3, 4U)}) {
        QTest::keyClick(&table(), key, modifiers);
        EXPECT_EQ(table().currentIndex().row(), row);
        EXPECT_EQ(window_->results().selectedClips().size(), selected);
    }

    window_->statusBar()->setFocus();
    window_->results().showClips({clip("A001C003").id, clip("A001C001").id});
    EXPECT_EQ(window_->results().selectedClips().size(), 2U);
    EXPECT_EQ(window_->focusWidget(), &table()) << "the next keys are for these clips";

    // Left selects the row that folds this one away, and then folds it; Right unfolds it.
    table().selectRow(first + 1);
    for (const auto& [key, rows] : {std::pair(Qt::Key_Left, 4), {Qt::Key_Left, 3}, {Qt::Key_Right, 4}}) {
        QTest::keyClick(&table(), key);
        EXPECT_EQ(table().model()->rowCount(), rows);
        EXPECT_EQ(table().currentIndex().row(), first);
    }

    // Search and filter show the matching rows; Down moves from the search into the list, and so does Escape.
    QLineEdit* search = window_->results().search();
    search->setFocus();
    QTest::keyClicks(search, "t01");
    EXPECT_EQ(table().model()->rowCount(), 2);
    QTest::keyClick(search, Qt::Key_Down);
    EXPECT_TRUE(table().hasFocus() && table().currentIndex().row() == 0);
    search->setFocus();
    QTest::keyClicks(search, " b001");
    EXPECT_EQ(table().model()->rowCount(), 1);
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(search->text().isEmpty() && search->hasFocus());
    QTest::keyClick(search, Qt::Key_Escape);
    EXPECT_TRUE(table().hasFocus());
    table().sortByColumn(1, Qt::DescendingOrder);
    EXPECT_LT(rowOf("A001C003"), rowOf("A001C001"));

    // A decision keeps the selection; if it removes the row, the next row is selected.
    table().selectRow(1);
    const UUID chosen = window_->results().selectedClips().front();
    const QString next = cell(2, 1);
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(window_->results().selectedClips(), std::vector{chosen});
    desktop_->controller().recordings().removeVideoFromSync(chosen);
    ASSERT_EQ(window_->results().selectedClips().size(), 1U);
    EXPECT_EQ(table().currentIndex().row(), 1);
    EXPECT_EQ(cell(1, 1), next);
}

TEST_F(WindowTest, ASearchOpensWhatItFoundAndAClipThatLeftTheFilterIsNamed) {
    scan();
    const auto inReview = [&] { return desktop_->players().review()->groupID(); };
    QLineEdit* search = window_->results().search();
    search->setFocus();
    table().selectRow(rowOf("A001C003"));
    QTest::keyClicks(search, "a001");
    EXPECT_EQ(window_->results().selectedClips(), std::vector{clip("A001C001").id}) << "which Return opens";
    EXPECT_TRUE(std::ranges::any_of(window_->results().findChildren<QLabel*>(),
                                    [](const QLabel* one) { return one->text() == "3 found"; }));
    search->clear();
    QTest::keyClicks(search, "b001");
    QTest::keyClick(search, Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return inReview() == clip("B001C001").id; }));
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return table().isVisible(); }));
    search->clear();
    search->setFocus();
    QTest::keyClicks(search, "t01"); // both cameras, of which the second was opened last
    const std::vector<UUID> marked = window_->results().selectedClips();
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return inReview().has_value(); }));
    EXPECT_EQ(marked, std::vector{inReview().value_or(UUID())}) << "the marked row is opened";
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return table().isVisible(); }));
    search->clear();

    table().setFocus();
    for (auto* one : window_->results().findChildren<QPushButton*>())
        if (one->text() == "Issues  1") QTest::mouseClick(one, Qt::LeftButton);
    EXPECT_TRUE(table().hasFocus()) << "a click on a filter leaves the keys with the list";
    const UUID unmatched = clip("A001C003").id;
    window_->openReview(unmatched);
    desktop_->controller().recordings().attachAudioToGroup(unmatched, *clip("A001C001").primaryAudio());
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    QString said;
    EXPECT_TRUE(waitUntil([&] {
        const auto* toast = window_->findChild<QFrame*>(QStringLiteral("toast"));
        if (toast != nullptr) said = toast->accessibleName();
        return said.contains("is not under “Issues” now");
    })) << said.toStdString();
    press(window_->results(), "Show All Clips");
    EXPECT_EQ(window_->results().selectedClips(), std::vector{unmatched});
}

TEST_F(WindowTest, TheCurrentClipStaysInViewWhenTheListGetsLower) {
    scan();
    table().selectRow(3);
    table().resize(table().width(), 100);
    EXPECT_LT(table().visualRect(table().currentIndex()).bottom(), table().viewport()->height());
}

TEST_F(WindowTest, TheLockOfManyClipsLeavesThoseThatNobodyHasLookedAt) {
    scan();
    const auto press = [&] {
        QTest::keyClick(window_.get(), Qt::Key_L, Qt::ControlModifier);
        QCoreApplication::processEvents(); // menus and toast
        return std::pair(window_->findChild<QFrame*>(QStringLiteral("toast"))->accessibleName(),
                         *work().undoState().undoActionName);
    };
    const auto locked = [&] { return std::ranges::count_if(work().syncGroups(), &SyncGroup::isLocked); };
    table().selectAll();
    const auto [said, step] = press();
    EXPECT_TRUE(said.startsWith("3 clips locked; 1 in doubt or without sound left")) << said.toStdString();
    EXPECT_EQ(step, "Lock");
    EXPECT_FALSE(clip("A001C003").isLocked);
    EXPECT_EQ(press(), std::pair(QString("3 clips unlocked. Undo takes it back."), std::string("Unlock")));
    EXPECT_EQ(locked(), 0);
    table().clearSelection(); // the keys of the test are still held for the table
    table().selectRow(rowOf("A001C003"));
    QTest::keyClick(window_.get(), Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(clip("A001C003").isLocked && locked() == 1) << "alone";
}

TEST_F(WindowTest, AFurtherScreenIsOpenedByItsClassAlone) {
    scan();
    const std::vector one{clip("A001C001").id}, other{clip("A001C003").id}, both{one[0], other[0]};
    ReviewActions actions(*desktop_);
    QStackedWidget pages;
    WorkScreens screens(*desktop_, pages, actions);
    screens.whenFrontChanged = [&] { pages.setCurrentWidget(&screens.front()); };
    screens.whenFrontChanged();
    screens.list().select(one);
    EXPECT_EQ(screens.clips(), one);
    screens.open<EmptyScreen>({});
    EXPECT_FALSE(screens.isPlaying()) << "it has no clip to show";

    screens.open<EmptyScreen>(other);
    EXPECT_TRUE(screens.isPlaying());
    EXPECT_EQ(pages.currentWidget(), screens.made<EmptyScreen>());
    EXPECT_EQ(screens.clips(), other);
    screens.goBack();
    EXPECT_FALSE(screens.isPlaying() || screens.get<EmptyScreen>().isOpen());
    EXPECT_EQ(screens.clips(), other) << "the clip that was in view";

    screens.list().select(both);
    screens.open<EmptyScreen>(both);
    screens.get<EmptyScreen>().loseClips();
    EXPECT_EQ(&screens.front(), &screens.list());
    EXPECT_EQ(screens.clips(), both);
    screens.openReview(one[0]);
    screens.open<EmptyScreen>(other);
    screens.goBack();
    EXPECT_EQ(&screens.front(), screens.made<ReviewView>()) << "where it was opened";
    screens.close();
}

TEST_F(WindowTest, ColumnsShareTheWidthByWhatTheirTextsNeed) {
    window_->resize(1440, 800);
    const auto show = [&](const char* camera, const char* sound) {
        desktop_->controller().openStoredWork(
            {{}, {}, SyncGroupList({test::clip(test::video(camera), test::audio(sound))})});
        QCoreApplication::processEvents();
        ASSERT_EQ(table().model()->rowCount(), 1);
        for (const int column : {0, 1, 5}) {
            const int needed =
                table().itemDelegate()->sizeHint({}, table().model()->index(0, column)).width();
            EXPECT_GE(table().columnWidth(column), needed) << column << sound;
        }
    };
    show("A001.mov", "10A-T01_0001_BOOM_MIX.WAV");
    show("A001C001_261126.mov", "T1.wav");
}

TEST_F(WindowTest, ANewNameHoldsNothingThatTheNamingAdds) {
    scan();
    QTimer::singleShot(0, window_.get(), [&] {
        auto* question = window_->findChild<QInputDialog*>();
        ASSERT_NE(question, nullptr);
        question->setTextValue(question->textValue() + "x");
        EXPECT_TRUE(question->labelText().endsWith(question->textValue() + " Cam A"));
        question->accept();
    });
    window_->results().rename(clip("A001C001").id);
    EXPECT_EQ(exportedName(desktop_->controller(), clip("A001C001"), *clip("A001C001").manualClipName),
              *clip("A001C001").manualClipName + " Cam A");
}

TEST_F(WindowTest, EntriesOfMenusHaveTheKeysOfTheUser) {
    const auto& center = desktop_->context().shortcuts();
    ASSERT_TRUE(waitUntil([&] { return center->ready().isDone(); }));
    const auto keyOf = [&](const QString& title) {
        for (const QAction* entry : window_->findChildren<QAction*>())
            if (entry->text() == title) return entry->shortcut().toString(QKeySequence::PortableText);
        return QStringLiteral("no entry");
    };
    using enum ShortcutAction;
    const struct {
        std::optional<ShortcutAction> action; ///< the action that gets the key
        const char *key, *lock, *approve, *resync;
    } cases[] = {{{}, "", "Ctrl+L", "Ctrl+Return", "Ctrl+R"},
                 {lockCurrent, "command+k", "Ctrl+K", "Ctrl+Return", "Ctrl+R"},
                 {lockCurrent, "command+r", "", "Ctrl+Return", "Ctrl+R"}, // an entry already has it
                 {lockCurrent, "x", "", "Ctrl+Return", "Ctrl+R"},         // in the review only
                 {lockCurrent, "command+return", "", "Ctrl+Return", "Ctrl+R"},
                 {toggleApproved, "command+shift+m", "Ctrl+Return", "Ctrl+Shift+M", "Ctrl+R"}};
    for (const auto& one : cases) {
        if (one.action) {
            const platform::Task bound = center->setBinding(Shortcut::fromText(one.key), *one.action);
            ASSERT_TRUE(waitUntil([&] { return bound.isDone(); }));
        }
        EXPECT_EQ(keyOf("Lock Current Clip"), one.lock) << one.key;
        EXPECT_EQ(keyOf("Mark Synced"), one.approve) << one.key;
        EXPECT_EQ(keyOf("Re-sync Clip"), one.resync) << one.key;
    }
}

TEST_F(WindowTest, ExportsAndRefusesToReplaceUnasked) {
    scan();
    const QString place = text(folder_.path("out.fcpxml"));
    desktop_->sessions().rename(*desktop_->sessions().currentSessionId(), "Day 1/2: night");
    ExportSheet exporting(*desktop_, window_.get());
    exporting.show();
    auto* document = exporting.findChildren<QLineEdit*>().back();
    ASSERT_EQ(document->accessibleName(), "Document");
    EXPECT_TRUE(document->text().endsWith("/Day 1-2- night.fcpxml")) << document->text().toStdString();
    QTest::keyClicks(exporting.findChildren<QLineEdit*>().front(), "?");
    EXPECT_TRUE(document->text().endsWith("/Synced-.fcpxml")) << document->text().toStdString();
    EXPECT_EQ(exporting.findChild<QScrollArea*>()->verticalScrollBar()->maximum(), 0) << "all is in view";
    document->setText(place);
    auto* outcome = static_cast<design::Banner*>(exporting.findChild<QFrame*>(QStringLiteral("outcome")));
    ASSERT_NE(outcome, nullptr);
    folder_.write("out.fcpxml", "somebody else's");
    press(exporting, "Export");
    ASSERT_TRUE(waitUntil([&] { return outcome->text().contains("already"); }));
    EXPECT_EQ(folder_.read("out.fcpxml"), "somebody else's");
    QTest::keyClick(exporting.focusWidget(), Qt::Key_Return); // answers "Replace It"
    press(exporting, "Cancel");
    ASSERT_TRUE(waitUntil([&] { return outcome->text().contains("was cancelled"); }));
    EXPECT_EQ(folder_.read("out.fcpxml"), "somebody else's");
    press(exporting, "Export");
    ASSERT_TRUE(waitUntil([&] { return outcome->text().startsWith("Written"); }))
        << outcome->text().toStdString();
    EXPECT_NE(folder_.read("out.fcpxml").find("<fcpxml"), std::string::npos);
    EXPECT_TRUE(button(exporting, "Done")->isDefault()) << "Return writes nothing again";
    EXPECT_TRUE(button(exporting, "Done")->hasFocus());

    // The card is removed.
    std::filesystem::rename(folder_.path("shoot"), folder_.path("away"));
    JSON arguments = JSON::object();
    arguments.set("mode", "standard");
    arguments.set("forceOverwriteManualTracks", false);
    ASSERT_TRUE(waitUntil([analysis = desktop_->run("runSmartAudioAnalysis", std::move(arguments))] {
        return analysis.isDone();
    }));
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("Smart Audio can't read the sound of "); }))
        << bannerText().toStdString();
    press(exporting, "Export");
    const auto warnings = [&] {
        for (const auto* one : exporting.findChildren<QLabel*>())
            if (one->text().startsWith("Export finished with warnings")) return one->text();
        return QString();
    };
    const auto isFirst = [&] {
        return warnings().section('\n', 1, 1).contains(" media files of the document can't be found");
    };
    EXPECT_TRUE(waitUntil(isFirst)) << warnings().toStdString();
    desktop_->runForClips("toggleExcludedFromExport", {clip("B001C001").id});
    const ExportSheet later(*desktop_, window_.get()); // warns before anything is written
    QString leftOut;
    EXPECT_TRUE(waitUntil([&] {
        for (const auto* one : later.findChildren<QLabel*>())
            if (one->text().contains(" media files of the document can't be found")) leftOut = one->text();
        return leftOut.contains("\n• excluded: 'B001C001");
    })) << leftOut.toStdString();
}

TEST_F(WindowTest, QuitsOverAnOpenSheet) {
    scan();
    showExport(*desktop_, window_.get());
    QTest::keyClick(&sheet(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([&] { return !window_->isVisible(); }));
}

TEST_F(WindowTest, ASheetThatIsHigherThanTheScreenScrollsAndCutsNothing) {
    scan();
    std::vector<SyncGroup> clips;
    for (int i = 0; i < 12; ++i) {
        clips.push_back(work().syncGroups().front());
        clips.back().id = UUID::random();
        clips.back().audioMatches.clear();
        clips.back().matchStatus = MatchStatus::unmatched();
    }
    desktop_->controller().openStoredWork({{}, {}, SyncGroupList(std::move(clips))});
    // The reasons why clips are left out change the height once they are known.
    ASSERT_TRUE(waitUntil([&] { return desktop_->controller().derivedDoubts().derive().isDone(); }));
    ExportSheet exporting(*desktop_, window_.get());
    exporting.show();
    exporting.setMinimumHeight(0);
    exporting.resize(exporting.width(), 400);
    QCoreApplication::processEvents();
    ASSERT_EQ(exporting.height(), 400);
    for (const QWidget* one : exporting.findChildren<QWidget*>()) {
        if (!one->isVisibleTo(&exporting) || qobject_cast<const QAbstractScrollArea*>(one)) continue;
        EXPECT_GE(one->height(), one->minimumSizeHint().height()) << one->accessibleName().toStdString();
    }
}

TEST_F(WindowTest, LongWorkIsShownWhileItRunsAndCanBeCancelled) {
    scan();
    WorkBar bar(*desktop_, std::chrono::milliseconds(0));
    const SmartAudioState& state = desktop_->controller().smartAudio().state();
    bool isShownRightly = true;
    const auto watching = desktop_->controller().onChange([&](ImportField field) {
        if (field == ImportField::smartAudio)
            isShownRightly = isShownRightly && bar.isVisibleTo(nullptr) == state.isAnalyzing;
    });
    JSON arguments = JSON::object();
    arguments.set("mode", "standard");
    arguments.set("forceOverwriteManualTracks", false);
    desktop_->run("runSmartAudioAnalysis", std::move(arguments));
    ASSERT_TRUE(state.isAnalyzing);
    EXPECT_TRUE(bar.findChild<QLabel*>()->text().startsWith("Listening to DAY1"));
    bar.findChild<QToolButton*>()->click();
    ASSERT_TRUE(waitUntil([&] { return !state.isAnalyzing; }));
    EXPECT_TRUE(isShownRightly);
    EXPECT_TRUE(state.results.empty());
    EXPECT_EQ(bannerText(), "Smart Audio has analyzed 0 of 2 clips with sound.");
    // Through the model: a view would toggle if it took the keys of another test as held.
    const QTableView* list = window_->results().table();
    list->selectionModel()->select(list->model()->index(0, 0),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    QAction* matchAgain = nullptr;
    for (QAction* one : window_->findChildren<QAction*>())
        if (one->shortcut() == QKeySequence(QStringLiteral("Ctrl+R")) && one->isEnabled()) matchAgain = one;
    ASSERT_NE(matchAgain, nullptr);
    auto* tool = window_->findChild<QAction*>(QStringLiteral("resync"));
    EXPECT_EQ(tool->toolTip(), "Re-sync Clip");
    tool->trigger();
    QString said;
    EXPECT_TRUE(waitUntil([&] {
        const auto* toast = window_->findChild<QFrame*>(QStringLiteral("toast"));
        if (toast != nullptr) said = toast->accessibleName();
        return said == "Matched again: nothing has changed.";
    })) << said.toStdString();
    list->selectionModel()->clear();
    EXPECT_EQ(tool->toolTip(), "Re-sync All Clips");

    bool isDone = false;
    bar.run("diagnose", "The cards", [&] { isDone = true; });
    EXPECT_EQ(bar.findChild<QLabel*>()->text(), "The cards");
    ASSERT_TRUE(waitUntil([&] { return isDone; }));
    EXPECT_TRUE(bar.isHidden());
}

TEST_F(WindowTest, ComparesTheSoundOfAllOrOfTheSelectedClips) {
    auto* compare = window_->findChild<QAction*>("compare");
    ASSERT_NE(compare, nullptr);
    EXPECT_FALSE(compare->isEnabled()) << "there is no clip";
    scan();
    table().selectionModel()->clear();
    EXPECT_EQ(compare->text(), "Compare Sound of All Clips");
    table().selectAll();
    EXPECT_EQ(compare->text(), "Compare Sound of 4 clips");
    compare->trigger();
    EXPECT_FALSE(compare->isEnabled()) << "one at a time";
    ASSERT_TRUE(waitUntil([&] { return !bannerText().isEmpty(); }));
    EXPECT_TRUE(bannerText().contains("compared")) << bannerText().toStdString();
    EXPECT_TRUE(waitUntil([&] { return compare->isEnabled(); }));
}

TEST_F(WindowTest, NudgesOnTwoVisitsToAClipAreTwoSteps) {
    scan();
    const auto nudgeOnAVisit = [&] {
        table().selectRow(rowOf("A001C003"));
        table().selectRow(rowOf("A001C001"));
        JSON call = JSON::object();
        call.set("groupID", clip("A001C001").id.text());
        call.set("frames", 1);
        desktop_->run("nudgeByFrames", std::move(call));
    };
    nudgeOnAVisit();
    nudgeOnAVisit();
    desktop_->run("undo");
    EXPECT_NEAR(clip("A001C001").manualAudioOffsetSeconds, 0.04, 1e-9);
}

TEST(ThemeTest, TextIsReadableOnEveryGround) {
    const design::Colours& all = design::colours();
    constexpr double least = 4.5;
    for (const QColor& ground : {all.window, all.panel, all.raised, all.hovered})
        for (const QColor& text : {all.text, all.facts, all.matched, all.doubtful, all.missing})
            EXPECT_GE(design::contrast(text, ground), least)
                << text.name().toStdString() << ground.name().toStdString();
    EXPECT_GE(design::contrast(all.onSelected, all.selected), least);
}

} // namespace orvane::views
