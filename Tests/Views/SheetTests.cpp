#include "OrvaneSyncApp/Views/DoubtBar.h"
#include "OrvaneSyncApp/Views/Notifier.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/SingleInstance.h"
#include "Support/Assets.h"
#include "Views/ShootWindow.h"

#include <QAction>
#include <QClipboard>
#include <QLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTreeWidget>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <thread>

namespace orvane::views {

namespace {

using test::waitUntil;

class SheetTest : public testing::Test, protected test::ShootWindow {
  protected:
    void SetUp() override { scan(); }
};

} // namespace

TEST_F(SheetTest, RenamesAllClipsInOneStepAsThePreviewSays) {
    showBatchRenamer(*desktop_, window_.get());
    QDialog& renamer = sheet();
    auto* preview = renamer.findChild<QTreeView*>();
    type(renamer, "Find", "12");
    type(renamer, "Replace with", "99");
    const auto after = [preview](int row) { return preview->model()->index(row, 1).data().toString(); };
    ASSERT_TRUE(waitUntil([&] { return after(0) == "99A-3 Cam A"; })) << "as the list will have it";
    EXPECT_EQ(preview->model()->rowCount(), 4);
    press(renamer, "Apply to All 4 Clips");
    EXPECT_EQ(std::ranges::count_if(work().syncGroups(),
                                    [](const SyncGroup& clip) { return clip.manualClipName == "99A-3"; }),
              2);
    desktop_->run("undo");
    EXPECT_TRUE(std::ranges::none_of(work().syncGroups(), [](const SyncGroup& clip) {
        return clip.manualClipName.has_value();
    })) << "one step for all of them";

    // If several clips are selected, only these are changed.
    const std::vector<UUID> both{clip("A001C001").id, clip("B001C001").id};
    window_->results().select({both.front(), clip("A001C003").id});
    QCoreApplication::processEvents();
    for (QAction* one : window_->findChildren<QAction*>())
        if (one->shortcut() == Qt::Key_F2 && one->isEnabled()) one->trigger();
    type(sheet(), "Prefix", "X");
    press(sheet(), "Apply to 2 Clips");
    EXPECT_TRUE(clip("A001C001").manualClipName.has_value());
    EXPECT_FALSE(clip("B001C001").manualClipName.has_value());
}

TEST_F(SheetTest, StopsTheSearchForRoomTone) {
    showAtmoBuilder(*desktop_, window_.get());
    press(sheet(), "Stop");
    const auto isSaid = [&] {
        return std::ranges::any_of(sheet().findChildren<QLabel*>(), [](const QLabel* one) {
            return one->isVisible() && one->text() == "The search was stopped";
        });
    };
    EXPECT_TRUE(waitUntil(isSaid));
    EXPECT_FALSE(desktop_->controller().atmo().candidates());
}

TEST_F(SheetTest, SaysWhichLinesOfAReviewTableAreOfNoUse) {
    const SyncGroup& clip = work().syncGroups()[0];
    std::ofstream(folder_.path("decided.csv")) << "camera_file\tchoice\tlock\n"
                                               << clip.video.filename << "\t9\tx\n";
    applyReviewTable(*desktop_, text(folder_.path("decided.csv")), window_.get());
    const auto lists = [&] { return window_->findChildren<QPlainTextEdit*>(); };
    ASSERT_TRUE(waitUntil([&] { return !lists().isEmpty(); }));
    EXPECT_TRUE(lists()[0]->toPlainText().contains("line 2: there is no recording number '9'"));
    EXPECT_TRUE(work().syncGroups()[0].isLocked) << "what the line says beside it counts";
}

TEST_F(SheetTest, WhatOnlyShowsStandsWhereItStoodUnderTheNextDoubt) {
    DoubtBar bar(*desktop_);
    const std::vector clips{clip("A001C001").id};
    JSON mode = JSON::object();
    mode.set("mode", "overlap");
    bar.show({{"a", {"b", {{"Trim to Overlap", "setTrimMode", mode, false}}}, clips}, {"c", {}, clips}});
    QCoreApplication::processEvents();
    const QPoint place = button(bar, "Show Clips")->pos();
    press(bar, "Trim to Overlap");
    EXPECT_EQ(settings_->get(settings::trimMode), TrimMode::overlap);
    const auto* toast = bar.findChild<QFrame*>("toast");
    ASSERT_NE(toast, nullptr);
    EXPECT_EQ(toast->accessibleName(), "Trim to Overlap: holds for all 4 clips. Undo takes it back.");
    press(bar, "›");
    EXPECT_EQ(button(bar, "Show Clips")->pos(), place);
    desktop_->run("undo");
    EXPECT_EQ(settings_->get(settings::trimMode), TrimMode::commonDuration);

    std::string words;
    for (int i = 0; i < 100; ++i) words += "the clips of this card ";
    bar.resize(700, 100);
    bar.show({{words, {}, clips}});
    QCoreApplication::processEvents();
    const int folded = bar.layout()->totalHeightForWidth(bar.width());
    const auto* shown = bar.findChild<design::FoldedText*>();
    EXPECT_TRUE(shown->text().endsWith("…") && shown->height() >= shown->heightForWidth(shown->width()))
        << "no line is cut";
    press(bar, "More");
    QCoreApplication::processEvents();
    EXPECT_GT(bar.layout()->totalHeightForWidth(bar.width()), 2 * folded);
    press(bar, "Less");
    QCoreApplication::processEvents();
    EXPECT_EQ(bar.layout()->totalHeightForWidth(bar.width()), folded);
    bar.show({{"few words", {}, clips}});
    EXPECT_EQ(button(bar, "More"), nullptr);

    int lost = 0;
    bar.whenFocusLost = [&] { ++lost; };
    bar.setVisible(true);
    bar.activateWindow();
    for (const bool isLast : {false, true}) {
        bar.show({{"a", {"b", {{"Trim to Overlap", "setTrimMode", mode, false}}}, clips}});
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // earlier buttons of that name
        QCoreApplication::processEvents();
        button(bar, "Trim to Overlap")->setFocus();
        ASSERT_TRUE(waitUntil([&] { return bar.isAncestorOf(QApplication::focusWidget()); }));
        bar.show(isLast ? std::vector<ResultsViewModel::Doubt>()
                        : std::vector{ResultsViewModel::Doubt{"c", {}, clips}});
        EXPECT_EQ(lost, isLast ? 2 : 1);
    }
}

TEST_F(SheetTest, TellsWhatThisMachineHasAndCopiesIt) {
    showDiagnostics(*desktop_, window_.get());
    QDialog& diagnostics = sheet();
    const auto copies = [&] {
        const auto all = diagnostics.findChildren<QPushButton*>();
        return std::ranges::any_of(all, [](auto* one) { return one->text() == "Copy" && one->isEnabled(); });
    };
    ASSERT_TRUE(waitUntil(copies));
    press(diagnostics, "Copy");
    EXPECT_TRUE(QGuiApplication::clipboard()->text().contains("media helper"));
}

TEST_F(SheetTest, NamesAndApprovesSoundWithoutPicture) {
    auto* list = window_->findChild<QTreeWidget*>(QStringLiteral("wildTracks"));
    ASSERT_EQ(work().wildTracks().size(), 1U);
    ASSERT_FALSE(work().wildTracks()[0].isApproved);
    for (const int column : {2, 1}) { // only the name can be edited
        const QModelIndex cell = list->model()->index(0, column);
        const QPoint at = list->visualRect(cell).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
        EXPECT_EQ(list->viewport()->findChild<QLineEdit*>() != nullptr, column == 1);
    }
    QTest::keyClick(list->viewport()->findChild<QLineEdit*>(), Qt::Key_Escape);
    list->topLevelItem(0)->setText(1, "Room of scene 12");
    ASSERT_TRUE(waitUntil([&] { return work().wildTracks()[0].customName == "Room of scene 12"; }));
    list->topLevelItem(0)->setCheckState(6, Qt::Checked);
    EXPECT_TRUE(waitUntil([&] { return work().wildTracks()[0].isApproved; }));
    // Its keys act on the recording, not on a clip of the list above.
    list->setCurrentItem(list->topLevelItem(0));
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([&] { return !work().wildTracks()[0].isApproved; }));
    QTest::keyClick(list, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([&] { return list->topLevelItem(0)->checkState(6) == Qt::Checked; }));
    QTest::keyClick(list, Qt::Key_L, Qt::ControlModifier);
    EXPECT_TRUE(std::ranges::none_of(work().syncGroups(),
                                     [](const SyncGroup& clip) { return clip.isApproved || clip.isLocked; }));

    const auto entry = [&](const QString& title) {
        for (auto* menu : list->findChildren<QMenu*>()) menu->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Q_EMIT list->customContextMenuRequested(list->visualItemRect(list->topLevelItem(0)).center());
        for (QAction* action : list->findChild<QMenu*>()->actions())
            if (action->text() == title) return action;
        return static_cast<QAction*>(nullptr);
    };
    table().clearSelection();
    EXPECT_FALSE(entry("Attach to the Selected Clip")->isEnabled());
    entry("Approve for export")->trigger();
    EXPECT_TRUE(waitUntil([&] { return !work().wildTracks()[0].isApproved; }));
    table().selectRow(0);
    const UUID chosen = window_->results().selectedClips().front();
    const UUID recording = work().wildTracks()[0].id;
    entry(QString::fromStdString("Attach to “" + work().syncGroups().find(chosen)->video.filename + "”"))
        ->trigger();
    EXPECT_EQ(work().syncGroups().find(chosen)->audioMatches.back().audio->id, recording);
    EXPECT_TRUE(work().wildTracks().empty());
}

TEST_F(SheetTest, SoundWithoutPictureIsReachedByKeysAndKeepsItsHeight) {
    window_->resize(1280, 690);
    std::vector<WildTrack> tracks;
    for (const char* name : {"R1.WAV", "R2.WAV", "R3.WAV", "R4.WAV", "R5.WAV", "R6.WAV", "R7.WAV"})
        tracks.emplace_back(test::audio(name));
    desktop_->controller().openStoredWork({{}, {}, work().syncGroups(), tracks});
    QCoreApplication::processEvents();
    auto* list = window_->findChild<QTreeWidget*>(QStringLiteral("wildTracks"));
    const int height = list->height();
    EXPECT_GE(list->viewport()->height(), 3 * list->visualItemRect(list->topLevelItem(0)).height());
    table().setFocus();
    for (int i = 0; i < 20 && !list->hasFocus(); ++i)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_TRUE(list->hasFocus());
    EXPECT_TRUE(list->topLevelItem(0)->isSelected());
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_TRUE(list->topLevelItem(1)->isSelected());
    QTest::keyClick(list, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(waitUntil([&] { return work().wildTracks()[1].isApproved; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(list->height(), height);
}

TEST_F(SheetTest, TheExportCountsWhatWasLockedAsWithoutSound) {
    desktop_->runForClips("toggleLocked", {clip("A001C001").id, clip("A001C003").id});
    showExport(*desktop_, window_.get());
    const auto all = sheet().findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(all, [](const QLabel* one) {
        return one->text().contains("1 clip locked as without sound: not in the document");
    }));
}

TEST_F(SheetTest, AddressesAreOpenedByAnotherThread) {
    const auto window = std::this_thread::get_id();
    std::string opened;
    QString why;
    const auto refused = [&](const QString& reason) { why = reason; };
    const QUrl folder = QUrl::fromLocalFile(QStringLiteral("/no/Day 1"));
    for (const bool isThere : {true, false}) {
        desktop_->openAddress = [&, isThere](const std::string& address) {
            opened = std::this_thread::get_id() == window ? "on the interface thread" : address;
            return isThere;
        };
        desktop_->openOutside(window_.get(), folder, refused);
        EXPECT_TRUE(waitUntil([&] { return why.isEmpty() == isThere; }));
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
        EXPECT_EQ(opened, "file:///no/Day%201");
    }
    EXPECT_EQ(why, "No program opens /no/Day 1 here.");
}

TEST_F(SheetTest, TellsTheDesktopWhatEndedUnseen) {
    QStringList told;
    QWidget unseen;
    const Notifier notifier(*desktop_, unseen, [&](const QString&, const QString& what) { told << what; });
    scan();
    EXPECT_EQ(told.filter("The scan is done").size(), 1) << told.join(", ").toStdString();
}

TEST(SingleInstanceTest, SendsItsArgumentsToTheFirstProgramIfThereIsOne) {
    test::application();
    const QString name = QStringLiteral("orvanesync-test-%1").arg(QCoreApplication::applicationPid());
    EXPECT_FALSE(SingleInstance(name).sendToFirst({"alone"}));
    QStringList taken;
    SingleInstance first(name);
    ASSERT_TRUE(first.listen([&](const QStringList& words) { taken = words; }));
    std::atomic<int> answer = -1;
    std::thread later([&] { answer = SingleInstance(name).sendToFirst({"/a card", "/b"}) ? 1 : 0; });
    EXPECT_TRUE(waitUntil([&] { return answer >= 0; }));
    later.join();
    EXPECT_EQ(answer, 1);
    EXPECT_EQ(taken, (QStringList{"/a card", "/b"}));
}

} // namespace orvane::views
