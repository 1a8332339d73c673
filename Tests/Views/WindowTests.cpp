#include "OrvaneDesignKit/Controls.h"
#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/ViewModels/Inspector/ClipParts.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/WorkBar.h"
#include "Support/Assets.h"
#include "Views/ShootWindow.h"

#include <QAbstractItemDelegate>
#include <QAbstractScrollArea>
#include <QAction>
#include <QDropEvent>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMimeData>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace orvane::views {

namespace {

using test::waitUntil;

class WindowTest : public testing::Test, protected test::ShootWindow {
  protected:
    QTableView& table() { return *window_->results().table(); }
    QString cell(int row, int column) { return table().model()->index(row, column).data().toString(); }
    QString bannerText() {
        for (const auto* one : window_->centralWidget()->findChildren<QFrame*>())
            if (const auto* banner = dynamic_cast<const design::Banner*>(one); banner && banner->isVisible())
                return banner->text();
        return {};
    }
    int rowOf(const QString& cameraFile) {
        for (int row = 0; row < table().model()->rowCount(); ++row)
            if (cell(row, 1).startsWith(cameraFile)) return row;
        return -1;
    }
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

    // Two cameras of one recording stand together, and the first folds the other away.
    const int first = rowOf("A001C001");
    ASSERT_EQ(rowOf("B001C001"), first + 1);
    EXPECT_TRUE(cell(first, 5).contains("DAY1_T01.WAV"));
    EXPECT_TRUE(std::ranges::any_of(window_->results().findChildren<QPushButton*>(), [&](const auto* one) {
        return one->text() == "Matched  3" && one->toolTip().startsWith("2 with sound and 1 MOS");
    }));
    ASSERT_TRUE(waitUntil([&] { return desktop_->controller().derivedDoubts().derive().isDone(); }));
    QCoreApplication::processEvents(); // what is in doubt stands above the list
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

    // Several clips at once are one step to take back.
    table().selectAll();
    table().selectionModel()->setCurrentIndex(table().model()->index(2, 3), QItemSelectionModel::NoUpdate);
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(table().currentIndex(), table().model()->index(2, 0)) << "keys go on from the row they were on";
    EXPECT_TRUE(clip("A001C001").isApproved && clip("A001C003").isApproved);
    EXPECT_EQ(window_->results().selectedClips().size(), 4U) << "the selection stays";
    EXPECT_TRUE(std::ranges::any_of(window_->statusBar()->findChildren<QLabel*>(), [](const QLabel* label) {
        return label->text().startsWith("4 selected · 4 clips");
    }));
    QCoreApplication::processEvents(); // menus follow in the next turn of the loop
    QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(clip("A001C001").isApproved || clip("A001C003").isApproved);

    // Home and End go to the first and the last row, with Shift all rows on the way are selected.
    for (const auto& [key, modifiers, row, selected] :
         {std::tuple(Qt::Key_End, Qt::NoModifier, 3, 1U), std::tuple(Qt::Key_Home, Qt::NoModifier, 0, 1U),
          std::tuple(Qt::Key_End, Qt::ShiftModifier, 3, 4U)}) {
        QTest::keyClick(&table(), key, modifiers);
        EXPECT_EQ(table().currentIndex().row(), row);
        EXPECT_EQ(window_->results().selectedClips().size(), selected);
    }

    // Left goes to the row that folds this one away, and folds it; Right unfolds it.
    table().selectRow(first + 1);
    for (const auto& [key, rows] : {std::pair(Qt::Key_Left, 4), {Qt::Key_Left, 3}, {Qt::Key_Right, 4}}) {
        QTest::keyClick(&table(), key);
        EXPECT_EQ(table().model()->rowCount(), rows);
        EXPECT_EQ(table().currentIndex().row(), first);
    }

    // Search and filter show what they say; Down leads from the search into the list, and so does Escape.
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

    // A decision takes no selection away, and where it takes the row, the next one is selected.
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
        std::optional<ShortcutAction> action; ///< that is given the key
        const char *key, *lock, *approve, *resync;
    } cases[] = {{{}, "", "Ctrl+L", "Ctrl+Return", "Ctrl+R"},
                 {lockCurrent, "command+k", "Ctrl+K", "Ctrl+Return", "Ctrl+R"},
                 {lockCurrent, "command+r", "", "Ctrl+Return", "Ctrl+R"}, // an entry has it already
                 {lockCurrent, "x", "", "Ctrl+Return", "Ctrl+R"},         // for the review alone
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

TEST_F(WindowTest, ScansNothingWhereAFolderThatIsNamedIsNotThere) {
    window_->openPaths({text(folder_.path("shoot/camera")), text(folder_.path("gone"))});
    EXPECT_TRUE(waitUntil([&] { return bannerText().contains("gone”") && !bannerText().contains("camera"); }))
        << bannerText().toStdString();
    const std::vector ready{FileURL{folder_.path("shoot/camera")}};
    EXPECT_TRUE(waitUntil([&] { return work().folders() == ready; })) << "to be scanned";
    QCoreApplication::processEvents();
    EXPECT_FALSE(window_->isScanning());
    desktop_->run("noSuchCommand"); // from a slot, which nothing may leave by an exception
    EXPECT_TRUE(bannerText().contains("noSuchCommand"));
}

TEST_F(WindowTest, AFolderThatIsNotThereIsToldOfAtItsField) {
    const auto* refused = window_->findChild<QWidget*>(QStringLiteral("refused"));
    const auto typeInto = [&](const char* name, const QString& words) -> QLineEdit& {
        for (auto* one : window_->findChildren<QLineEdit*>())
            if (one->isVisible() && one->accessibleName() == name) {
                QTest::keyClicks(one, words);
                QTest::keyClick(one, Qt::Key_Return);
                return *one;
            }
        throw std::logic_error("no field");
    };
    typeInto("Folder with picture and sound", text(folder_.path("gone")));
    ASSERT_TRUE(waitUntil([&] { return refused->isVisible(); }));
    EXPECT_TRUE(refused->findChild<QLabel*>()->text().startsWith("Can't read the folder"));
    EXPECT_EQ(bannerText(), QString());

    scan();
    window_->findChild<QAction*>("newScan")->trigger();
    QLineEdit& field = typeInto("Video folder", "/gone");
    ASSERT_TRUE(waitUntil([&] { return refused->isVisible(); }));
    EXPECT_TRUE(field.hasFocus());
    const auto scans = desktop_->controller().scan().scanNumber();
    press(*window_, "Scan && Match");
    ASSERT_TRUE(waitUntil([&] { return refused->isVisible(); }));
    EXPECT_EQ(desktop_->controller().scan().scanNumber(), scans) << "the field names another folder";
    QTest::keyClicks(&field, "x");
    EXPECT_FALSE(refused->isVisible());
}

TEST_F(WindowTest, ScansTheFoldersThatWereNamedLastAndNoneWhereOneCannotBeRead) {
    const std::string shoot = folder_.path("shoot");
    window_->scanFolders({text(shoot + "/sound")});
    window_->scanFolders({text(shoot)}); // before it is known whether the other can be read
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
    const std::vector last{FileURL{shoot}};
    EXPECT_EQ(work().folders(), last);
    const auto scans = desktop_->controller().scan().scanNumber();
    window_->scanFolders({text(shoot + "/gone")});
    ASSERT_TRUE(waitUntil([&] { return bannerText().contains("gone"); }));
    EXPECT_EQ(desktop_->controller().scan().scanNumber(), scans);
    EXPECT_EQ(work().folders(), last);
}

TEST_F(WindowTest, WhatIsDroppedGoesWhereItBelongs) {
    const auto drop = [&](const QStringList& names) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& name : names) urls << QUrl::fromLocalFile(text(folder_.path(utf8(name))));
        data.setUrls(urls);
        QDragEnterEvent enter({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window_.get(), &enter);
        QDropEvent event({}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(window_.get(), &event);
    };
    folder_.write("notes.pdf", "%PDF-1.7");
    folder_.write("report.csv", "Name,Scene\nA001C001,12\n");
    drop({"notes.pdf"});
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("“notes.pdf”"); }))
        << bannerText().toStdString();
    drop({"shoot/sound"});
    EXPECT_EQ(bannerText(), "");
    drop({"shoot/camera"}); // does not take the place of the sound
    const auto folderOf = [&](const auto& url) { return url ? url->lastPathComponent() : std::string(); };
    EXPECT_TRUE(waitUntil([&] {
        return folderOf(work().videoFolderURL()) == "camera" && folderOf(work().audioFolderURL()) == "sound";
    }));
    QTest::keyClick(window_->focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(window_->isScanning());
    const auto scans = desktop_->controller().scan().scanNumber();
    drop({"shoot"});
    EXPECT_TRUE(bannerText().startsWith("A scan is under way"));
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
    EXPECT_EQ(desktop_->controller().scan().scanNumber(), scans) << "which other folders do not end";
    EXPECT_FALSE(work().syncGroups().empty());
    drop({"report.csv"});
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("Report loaded: "); }))
        << bannerText().toStdString();
}

TEST_F(WindowTest, OffersNothingForAllClipsWhileAScanReplacesThem) {
    scan();
    const auto scanning = desktop_->controller().scan().startScan();
    const auto isOffered = [&](bool expected) {
        for (const char* id :
             {"resyncAllClips", "loadALE", "scanAtmoCandidates", "exportFCPXML", "batchRename"})
            EXPECT_EQ(desktop_->isEnabled(id), expected) << id;
    };
    isOffered(false);
    desktop_->controller().scan().stopScan();
    ASSERT_TRUE(waitUntil([&] { return scanning.isDone(); }));
    isOffered(true);
}

TEST_F(WindowTest, ANewScanIsLeftWithoutATraceAndActsOnNoClip) {
    scan();
    auto* pages = window_->findChild<QStackedWidget*>();
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    ASSERT_EQ(pages->currentIndex(), 0);
    QTest::keyClick(window_.get(), Qt::Key_Return,
                    Qt::ControlModifier); // approves what is selected in the list
    ASSERT_NE(qobject_cast<QLineEdit*>(window_->focusWidget()), nullptr) << "a folder can be typed at once";
    QTest::keyClick(window_->focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(pages->currentIndex(), 2);
    EXPECT_EQ(table().model()->rowCount(), 4);
    EXPECT_TRUE(std::ranges::none_of(work().syncGroups(), &SyncGroup::isApproved));
}

TEST_F(WindowTest, AScanThatTakesDecisionsAwaySaysSoBeforeAndAfter) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    const auto* warned = window_->findChild<QWidget*>(QStringLiteral("lost"));
    EXPECT_TRUE(warned->isVisible() && warned->accessibleName().contains("1 locked"));
    scan();
    EXPECT_FALSE(clip("A001C001").isLocked);
    EXPECT_TRUE(bannerText().contains("1 locked")) << bannerText().toStdString();
    desktop_->runForClips("toggleApproved", {clip("A001C003").id});
    press(*window_->centralWidget(), "Undo");
    EXPECT_TRUE(clip("A001C003").isApproved) << "the later step is another one's";
    desktop_->run("undo");
    desktop_->run("undo");
    EXPECT_TRUE(clip("A001C001").isLocked);

    // So does the scan of a cure that is chosen in the review.
    table().selectRow(rowOf("A001C001"));
    QTest::keyClick(&table(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return desktop_->players().review()->groupID().has_value(); }));
    desktop_->whenScanWanted();
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning() && !clip("A001C001").isLocked; }));
    EXPECT_TRUE(bannerText().contains("1 locked")) << bannerText().toStdString();
    EXPECT_TRUE(table().isVisible() && !desktop_->players().review()->groupID()) << "the clip is another one";
    press(*window_->centralWidget(), "Undo");
    EXPECT_TRUE(clip("A001C001").isLocked);

    // A session that is opened takes the place of the page on which a scan was prepared.
    const UUID first = *desktop_->sessions().currentSessionId();
    desktop_->run("newSession");
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    JSON arguments = JSON::object();
    arguments.set("sessionId", first.text());
    desktop_->run("loadSession", std::move(arguments));
    auto* pages = window_->findChild<QStackedWidget*>();
    EXPECT_TRUE(waitUntil([&] { return pages->currentIndex() == 2; }));

    desktop_->sessions().deleteSession(first);
    EXPECT_TRUE(waitUntil([&] { return pages->currentIndex() == 0; })) << "its clips would be kept nowhere";
}

TEST_F(WindowTest, AnotherShootGetsASessionOfItsOwn) {
    scan();
    table().selectAll();
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    const auto first = desktop_->sessions().currentSessionId();
    ASSERT_TRUE(first);
    JSON project = JSON::object();
    project.set("path", folder_.path("one.orvanesync"));
    desktop_->run("saveProject", std::move(project));
    ASSERT_TRUE(waitUntil([&] { return window_->windowTitle().contains("(one.orvanesync)"); }));
    test::makeSmallShoot(folder_.path("other"));
    scan("other");
    EXPECT_FALSE(clip("A001C001").isApproved);
    EXPECT_EQ(bannerText(), "") << "no session has these folders";
    EXPECT_NE(desktop_->sessions().currentSessionId(), first);
    EXPECT_FALSE(window_->windowTitle().contains("one")) << window_->windowTitle().toStdString();
    desktop_->run("newSession");
    QCoreApplication::processEvents();
    scan();
    ASSERT_TRUE(waitUntil([&] { return bannerText().startsWith("These folders are in the session"); }));
    press(*window_->centralWidget(), "Open It");
    ASSERT_TRUE(waitUntil([&] { return desktop_->sessions().currentSessionId() == first; }));
    EXPECT_TRUE(clip("A001C001").isApproved);
    EXPECT_TRUE(clip("A001C001").video.url.path.starts_with(folder_.path("shoot")));
    const auto trees = window_->findChildren<QTreeWidget*>();
    const auto sessions = std::ranges::find(trees, QStringLiteral("Sessions"), &QWidget::accessibleName);
    ASSERT_NE(sessions, trees.end());
    ASSERT_NE((*sessions)->currentItem(), nullptr);
    EXPECT_TRUE((*sessions)->currentItem()->font(0).bold()) << "keys act on the session that was opened";
    QKeyEvent asks(QEvent::ShortcutOverride, Qt::Key_F2, Qt::NoModifier);
    asks.ignore();
    QCoreApplication::sendEvent(*sessions, &asks);
    EXPECT_TRUE(asks.isAccepted()) << "the session is renamed, and no clip";

    // What is open is not read again by a second double click, as that would take the steps back; and rows
    // stay while the work is saved, so that a double click that has begun finds its row.
    SessionsPanel panel(*desktop_);
    panel.show();
    bool isWanted = false;
    panel.whenOpenWorkIsWanted = [&] { isWanted = true; };
    auto& tree = *panel.findChild<QTreeWidget*>();
    for (const SessionInfo& one : std::vector(desktop_->sessions().sessions()))
        if (one.id != *first) desktop_->sessions().rename(one.id, "big");
    desktop_->sessions().rename(*first, "big");
    const auto isOpen = [&](int row) { return tree.topLevelItem(row)->font(0).bold(); };
    QTreeWidgetItem* const open = tree.topLevelItem(isOpen(0) ? 0 : isOpen(1) ? 1 : 2);
    const int row = tree.indexOfTopLevelItem(open);
    JSON third = JSON::object();
    third.set("groupID", clip("A001C003").id.text());
    desktop_->run("toggleLocked", std::move(third));
    ASSERT_TRUE(waitUntil([&] { return open->toolTip(0).contains("1 locked"); }));
    ASSERT_EQ(tree.topLevelItem(row), open) << "opening and saving move no row";
    EXPECT_FALSE(open->text(1).isEmpty()) << "a session of this name is there twice";
    Q_EMIT tree.itemActivated(open, 0);
    EXPECT_TRUE(isWanted);
    EXPECT_TRUE(work().undoState().canUndo);
}

TEST_F(WindowTest, AStartOpensTheNewestSessionOrSaysWhyNot) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    const UUID id = *desktop_->sessions().currentSessionId();
    const QString folder = text(folder_.path("sessions/" + id.text() + ".orvanesync"));
    const auto start = [&](const std::function<void()>& atOnce = {}) {
        ASSERT_TRUE(waitUntil([&, saved = desktop_->sessions().flush()] { return saved.isDone(); }));
        begin();
        window_->openNewestSession();
        if (atOnce) atOnce();
        ASSERT_TRUE(waitUntil([&] { return !bannerText().isEmpty() && !window_->isOpeningNewest(); }));
        QCoreApplication::processEvents();
    };
    const auto page = [&] { return window_->findChild<QStackedWidget*>()->currentIndex(); };
    window_->resize(4000, 3000); // on a larger screen than the next time
    window_->results().search()->setText("a001");
    window_->results().select({clip("A001C003").id});
    window_->close();
    start();
    EXPECT_EQ(window_->results().search()->text(), "a001");
    EXPECT_EQ(window_->results().selectedClips(), std::vector{clip("A001C003").id});
    EXPECT_LE(window_->height(), window_->screen()->availableGeometry().height());
    EXPECT_TRUE(clip("A001C001").isLocked);
    EXPECT_EQ(page(), 2);
    press(*window_->centralWidget(), "New Scan…");
    EXPECT_EQ(page(), 0);
    const auto isWelcome = [&] {
        return std::ranges::any_of(window_->findChildren<QLabel*>(), [](const QLabel* one) {
            return one->isVisible() && one->text().startsWith("Choose the camera and sound folders");
        });
    };
    EXPECT_FALSE(isWelcome()) << "there is a session";
    window_->findChild<QAction*>("introduction")->trigger();
    EXPECT_TRUE(isWelcome());

    start([&] { window_->openPaths({"/nowhere"}); });
    EXPECT_TRUE(bannerText().contains("/nowhere"));
    EXPECT_TRUE(work().syncGroups().empty()) << "what is named takes its place";
    design::keptState::set("opening", text(id.text()));
    start();
    EXPECT_EQ(page(), 0);
    EXPECT_TRUE(bannerText().contains("ended while it opened")) << "it is not tried twice";
    std::ofstream(utf8(folder) + "/groups.json") << "no clips";
    // So does opening it again in the same run, also after a clip was only opened.
    window_->openReview(clip("B001C001").id);
    desktop_->run("reset");
    ASSERT_TRUE(waitUntil([&] { return work().syncGroups().empty(); }));
    JSON again = JSON::object();
    again.set("sessionId", id.text());
    desktop_->run("loadSession", std::move(again));
    ASSERT_TRUE(waitUntil([&] { return !work().syncGroups().empty() && page() == 2; }));
    EXPECT_EQ(window_->results().selectedClips(), std::vector{clip("B001C001").id});

    start();
    EXPECT_EQ(page(), 0);
    EXPECT_TRUE(bannerText().contains("groups.json")) << bannerText().toStdString();
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

    // The card is pulled out.
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
    const ExportSheet later(*desktop_, window_.get()); // says so before anything is written
    EXPECT_TRUE(waitUntil([&] {
        return std::ranges::any_of(later.findChildren<QLabel*>(), [](const QLabel* one) {
            return one->text().contains(" media files of the document can't be found");
        });
    }));
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
    // Why clips are left out changes the height once it is known.
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
    // By the model: a view toggles where the keys of another test count as held.
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
