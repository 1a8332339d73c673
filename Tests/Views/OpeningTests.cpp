#include "OrvaneDesignKit/KeptState.h"
#include "OrvaneSyncApp/Views/Leaving.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "Platform/FileLock.h"
#include "Views/ShootWindow.h"

#include <QAction>
#include <QDropEvent>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

namespace orvane::views {

namespace {

using test::waitUntil;

/// Opening folders, projects, dropped files and sessions in the window.
class OpeningTest : public testing::Test, protected test::ShootWindow {
  protected:
    bool isSaved() const {
        const auto& sessions = desktop_->sessions();
        return waitUntil([&] { return sessions.currentSession() != nullptr && sessions.unsaved().empty(); });
    }
    std::filesystem::path placeOfSession() const {
        return folder_.path("sessions/" + desktop_->sessions().currentSessionId()->text() + ".orvanesync");
    }
    /// A file where the folder of the session was; returns its place.
    std::filesystem::path makeUnwritable() const {
        std::filesystem::path place = placeOfSession();
        std::filesystem::rename(place, folder_.path("aside"));
        folder_.write("sessions/" + place.filename().string(), "");
        return place;
    }
    void makeWritable(const std::filesystem::path& place) const {
        std::filesystem::remove(place);
        std::filesystem::rename(folder_.path("aside"), place);
    }
};

} // namespace

TEST_F(OpeningTest, ScansNothingWhereAFolderThatIsNamedIsNotThere) {
    window_->openPaths({text(folder_.path("shoot/camera")), text(folder_.path("gone"))});
    EXPECT_TRUE(waitUntil([&] { return bannerText().contains("gone”") && !bannerText().contains("camera"); }))
        << bannerText().toStdString();
    const std::vector ready{FileURL{folder_.path("shoot/camera")}};
    EXPECT_TRUE(waitUntil([&] { return work().folders() == ready; })) << "to be scanned";
    QCoreApplication::processEvents();
    EXPECT_FALSE(window_->isScanning());
    desktop_->run("noSuchCommand"); // from a slot, which must let no exception out
    EXPECT_TRUE(bannerText().contains("noSuchCommand"));
}

TEST_F(OpeningTest, AFolderThatIsNotThereIsNamedAtItsField) {
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

TEST_F(OpeningTest, ScansTheFoldersThatWereNamedLastAndNoneWhereOneCannotBeRead) {
    const std::string shoot = folder_.path("shoot");
    window_->scanFolders({text(shoot + "/sound")});
    window_->scanFolders({text(shoot)}); // before it is known whether the first folders can be read
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
    const std::vector last{FileURL{shoot}};
    EXPECT_EQ(work().folders(), last);
    const auto scans = desktop_->controller().scan().scanNumber();
    window_->scanFolders({text(shoot + "/gone")});
    ASSERT_TRUE(waitUntil([&] { return bannerText().contains("gone"); }));
    EXPECT_EQ(desktop_->controller().scan().scanNumber(), scans);
    EXPECT_EQ(work().folders(), last);
}

TEST_F(OpeningTest, WhatIsDroppedGoesWhereItBelongs) {
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
    drop({"shoot/camera"}); // does not replace the sound folder
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

TEST_F(OpeningTest, AReportThatIsReadBeforeTheClipsSaysWhatItIsFor) {
    folder_.write("report.csv", "Name,Scene\nA001C001,12\n");
    JSON report = JSON::object();
    report.set("path", folder_.path("report.csv"));
    desktop_->run("loadALE", std::move(report));
    EXPECT_TRUE(waitUntil([&] { return bannerText().contains("the next scan"); }));
    scan();
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("Report loaded: "); }))
        << bannerText().toStdString();
}

TEST_F(OpeningTest, OffersNothingForAllClipsWhileAScanReplacesThem) {
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

TEST_F(OpeningTest, QuittingAsksWhereWhatWasDecidedIsOnNoDisk) {
    scan();
    ASSERT_TRUE(isSaved());
    const auto place = makeUnwritable();
    desktop_->controller().clips().toggleApproved(clip("A001C001").id);
    bool isEnded = false;
    Leaving leaving(*desktop_, *window_, [&] { isEnded = true; });
    window_->close();
    leaving.begin();
    ASSERT_TRUE(waitUntil([&] { return window_->findChild<QMessageBox*>() != nullptr; }));
    auto& box = *window_->findChild<QMessageBox*>();
    EXPECT_TRUE(window_->isVisible());
    EXPECT_TRUE(box.informativeText().contains("1 clip")) << box.informativeText().toStdString();
    press(box, "Keep Working");
    QCoreApplication::processEvents();
    EXPECT_FALSE(isEnded);

    makeWritable(place);
    leaving.begin();
    EXPECT_TRUE(waitUntil([&] { return isEnded; }));
}

TEST_F(OpeningTest, ClosingAsksWhereTheLastChangeIsOnNoDisk) {
    scan();
    ASSERT_TRUE(isSaved());
    const auto place = makeUnwritable();
    desktop_->controller().clips().toggleApproved(clip("A001C001").id);
    for (const bool leaves : {false, true}) {
        QTimer answering;
        QObject::connect(&answering, &QTimer::timeout, [&] {
            if (auto* box = window_->findChild<QMessageBox*>())
                press(*box, leaves ? "Leave It" : "Keep Working");
        });
        answering.start(std::chrono::milliseconds(10));
        const platform::Task closing = desktop_->run("reset");
        ASSERT_TRUE(waitUntil([&] { return closing.isDone(); }));
        EXPECT_EQ(work().syncGroups().empty(), leaves);
    }
    makeWritable(place);
}

TEST_F(OpeningTest, ASessionFromElsewhereAndAScanWithoutACardAskFirst) {
    scan();
    ASSERT_TRUE(isSaved());
    const auto place = placeOfSession();
    const std::filesystem::path copy = folder_.path("copy") / place.filename();
    std::filesystem::create_directory(copy.parent_path());
    std::filesystem::copy(place, copy, std::filesystem::copy_options::recursive);
    makeUnwritable();
    desktop_->controller().clips().toggleApproved(clip("A001C001").id);
    QString answer = "Keep Working";
    int asked = 0;
    QTimer answering;
    QObject::connect(&answering, &QTimer::timeout, [&] {
        auto* box = window_->findChild<QMessageBox*>();
        if (box == nullptr || button(*box, answer) == nullptr) return;
        ++asked;
        press(*box, answer);
    });
    answering.start(std::chrono::milliseconds(10));
    window_->openPaths({text(copy.string())});
    ASSERT_TRUE(waitUntil([&] { return asked == 1; }));
    QCoreApplication::processEvents();
    EXPECT_TRUE(clip("A001C001").isApproved);
    makeWritable(place);

    std::filesystem::rename(folder_.path("shoot/sound"), folder_.path("unplugged"));
    for (const bool scans : {false, true}) {
        answer = scans ? "Scan Without It" : "Don't Scan";
        desktop_->whenScanWanted();
        ASSERT_TRUE(waitUntil([&] { return asked == (scans ? 3 : 2) && !window_->isScanning(); }));
        EXPECT_EQ(clip("A001C001").audioMatches.empty(), scans);
    }
}

TEST_F(OpeningTest, AStartSaysWhatCouldNotBeSavedBeforeUnlessItWasSavedSince) {
    scan();
    for (const bool isSavedSince : {true, false}) {
        SCOPED_TRACE(isSavedSince);
        ASSERT_TRUE(isSaved());
        const auto place = makeUnwritable();
        desktop_->controller().clips().toggleApproved(clip("A001C001").id);
        bool isEnded = false;
        {
            Leaving leaving(*desktop_, *window_, [&] { isEnded = true; });
            leaving.begin();
            ASSERT_TRUE(waitUntil([&] { return window_->findChild<QMessageBox*>() != nullptr; }));
            press(*window_->findChild<QMessageBox*>(), "Quit Anyway");
            ASSERT_TRUE(waitUntil([&] { return isEnded; }));
        }
        if (isSavedSince) {
            makeWritable(place);
            ASSERT_TRUE(waitUntil([&, saved = desktop_->sessions().flush()] { return saved.isDone(); }));
        }
        window_.reset();
        desktop_.reset();
        if (!isSavedSince) makeWritable(place);
        begin();
        window_->openNewestSession();
        ASSERT_TRUE(waitUntil([&] { return !work().syncGroups().empty() && !window_->isOpeningNewest(); }));
        EXPECT_EQ(bannerText().contains("1 clip after that could not be saved"), !isSavedSince)
            << bannerText().toStdString();
    }
}

TEST_F(OpeningTest, TheQuestionAboutASaveThatHangsIsAnsweredByTheSave) {
    scan();
    ASSERT_TRUE(isSaved());
    const auto& sessions = desktop_->sessions();
    const std::string place = placeOfSession();
    std::unique_ptr<platform::FileLock> lock; // a save waits for it
    std::thread([&] { lock.reset(new platform::FileLock(platform::FileLock::ofFolder(place))); }).join();
    desktop_->controller().clips().toggleApproved(clip("A001C001").id);
    bool isEnded = false;
    Leaving leaving(
        *desktop_, *window_, [&] { isEnded = true; }, std::chrono::milliseconds(1));
    leaving.begin();
    ASSERT_TRUE(waitUntil([&] { return window_->findChild<QMessageBox*>() != nullptr; }));
    EXPECT_TRUE(window_->findChild<QMessageBox*>()->informativeText().contains("does not answer"));
    lock.reset();
    EXPECT_TRUE(waitUntil([&] { return isEnded; }));
    EXPECT_TRUE(waitUntil([&] { return window_->findChild<QMessageBox*>() == nullptr; }));
    EXPECT_TRUE(sessions.unsaved().empty());
}

TEST_F(OpeningTest, ANewScanIsLeftWithoutATraceAndActsOnNoClip) {
    scan();
    auto* pages = window_->findChild<QStackedWidget*>();
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    ASSERT_EQ(pages->currentIndex(), 0);
    QTest::keyClick(window_.get(), Qt::Key_Return,
                    Qt::ControlModifier); // approves the selection of the list
    ASSERT_NE(qobject_cast<QLineEdit*>(window_->focusWidget()), nullptr) << "a folder can be typed at once";
    QTest::keyClick(window_->focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(pages->currentIndex(), 2);
    EXPECT_EQ(table().model()->rowCount(), 4);
    EXPECT_TRUE(std::ranges::none_of(work().syncGroups(), &SyncGroup::isApproved));
}

TEST_F(OpeningTest, AScanKeepsTheDecisionsWhereItMatchesAsBefore) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    table().selectRow(rowOf("A001C003"));
    const auto* warned = window_->findChild<QWidget*>(QStringLiteral("lost"));
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    EXPECT_TRUE(warned->isVisible() && warned->accessibleName().contains("(1 locked) is kept"))
        << warned->accessibleName().toStdString();
    namespace fs = std::filesystem;
    const std::string card = folder_.path("card/");
    fs::create_directories(card);
    fs::rename(folder_.path("shoot/camera/") + clip("B001C001").video.filename, card + "B001C001.mov");
    scan();
    // Without the other camera of its take, the locked clip has no camera in its name.
    const QString renamed =
        QStringLiteral(" The name of a locked clip changed from “12A-3 Cam A” to “12A-3”.");
    ASSERT_TRUE(waitUntil([&] { return bannerText() == "All decisions were kept." + renamed; }))
        << bannerText().toStdString();
    EXPECT_TRUE(clip("A001C001").isLocked);
    EXPECT_EQ(table().selectionModel()->selectedRows().value(0).row(), rowOf("A001C003"))
        << "the selected clip is a new one of the same file";
    desktop_->run("undo");
    EXPECT_TRUE(clip("A001C001").isLocked);
    EXPECT_NE(clip("B001C001").video.url.path, card + "B001C001.mov");
    desktop_->run("redo");
    EXPECT_TRUE(clip("A001C001").isLocked);

    window_->addCard(text(card));
    ASSERT_TRUE(waitUntil([&] {
        return bannerText().startsWith("All decisions were kept; the scan found 1 new clip. The name of");
    })) << bannerText().toStdString();
    EXPECT_TRUE(clip("A001C001").isLocked);
    EXPECT_EQ(clip("B001C001").video.url.path, card + "B001C001.mov");
}

TEST_F(OpeningTest, AScanThatTakesDecisionsAwaySaysSoBeforeAndAfter) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    desktop_->controller().scan().setCorrections({.soundOffset = "00:00:02:00"});
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
    EXPECT_FALSE(bannerText().contains("1 locked")) << "all is back";
    desktop_->run("redo");
    EXPECT_TRUE(bannerText().contains("1 locked")) << "the redone scan has taken them away again";
    press(*window_->centralWidget(), "Keep the Decisions");
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("All decisions were kept"); }));
    EXPECT_TRUE(clip("A001C001").isLocked);

    // The scan of a cure that is chosen in the review does so too.
    table().selectRow(rowOf("A001C001"));
    QTest::keyClick(&table(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return desktop_->players().review()->groupID().has_value(); }));
    desktop_->controller().scan().setCorrections({});
    desktop_->whenScanWanted();
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning() && !clip("A001C001").isLocked; }));
    EXPECT_TRUE(bannerText().contains("1 locked")) << bannerText().toStdString();
    EXPECT_TRUE(table().isVisible() && !desktop_->players().review()->groupID()) << "the clip is another one";
    press(*window_->centralWidget(), "Undo");
    EXPECT_TRUE(clip("A001C001").isLocked);

    // A session that is opened replaces the page on which a scan was prepared.
    const UUID first = *desktop_->sessions().currentSessionId();
    desktop_->run("newSession");
    ASSERT_TRUE(waitUntil([&] { return work().syncGroups().empty(); })) << "once the last change is saved";
    window_->findChild<QAction*>(QStringLiteral("newScan"))->trigger();
    JSON arguments = JSON::object();
    arguments.set("sessionId", first.text());
    desktop_->run("loadSession", std::move(arguments));
    auto* pages = window_->findChild<QStackedWidget*>();
    EXPECT_TRUE(waitUntil([&] { return pages->currentIndex() == 2; }));

    desktop_->sessions().deleteSession(first);
    EXPECT_TRUE(waitUntil([&] { return pages->currentIndex() == 0; })) << "its clips would be kept nowhere";
}

TEST_F(OpeningTest, AScanSaysWhatItLeftOut) {
    namespace fs = std::filesystem;
    const fs::path camera = folder_.path("shoot/camera");
    fs::create_directory(camera / "0");
    for (const auto& file : fs::directory_iterator(camera))
        if (file.is_regular_file()) fs::copy(file.path(), camera / "0");
    scan();
    ASSERT_TRUE(waitUntil([&] { return bannerText().startsWith("Left out as copies of camera files"); }));
    EXPECT_TRUE(bannerText().contains("A001C001")) << bannerText().toStdString();
    std::ofstream(camera / "A002C001.R3D") << "RED2";
    scan();
    ASSERT_TRUE(
        waitUntil([&] { return bannerText().startsWith("Files of kinds that can't be read: 1 R3D"); }));
    press(*window_->centralWidget(), "All 2 Warnings");
    const auto* all = window_->findChild<QMessageBox*>();
    ASSERT_NE(all, nullptr);
    EXPECT_TRUE(all->informativeText().contains("Left out as copies"));
}

TEST_F(OpeningTest, AnotherShootGetsASessionOfItsOwn) {
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
    ASSERT_TRUE(waitUntil([&] { return work().syncGroups().empty(); })) << "once the last change is saved";
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

    // A second double click does not read the open session again, because that would clear the undo steps.
    // The rows stay while the work is saved, so that the second click of a double click finds its row.
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
    EXPECT_TRUE(open->text(1).contains(':')) << "the time: sessions of this name were made on the same day";
    Q_EMIT tree.itemActivated(open, 0);
    EXPECT_TRUE(isWanted);
    EXPECT_TRUE(work().undoState().canUndo);
}

TEST_F(OpeningTest, WhatAProjectDoesNotHoldIsSaidOfOneThatWasSaved) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    const auto saveAs = [this](const std::string& name) {
        QTimer::singleShot(0, [&] {
            auto* dialog = dynamic_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            dialog->selectFile(text(folder_.path(name)));
            static_cast<QDialog*>(dialog)->done(QDialog::Accepted); // without the question that it would ask
        });
        for (QAction* entry : window_->findChildren<QAction*>())
            if (entry->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_S)) entry->trigger();
    };
    std::filesystem::create_directory(folder_.path("held.orvanesync"));
    saveAs("held.orvanesync");
    EXPECT_EQ(bannerText(), "") << "before the save has ended";
    EXPECT_TRUE(waitUntil([&] { return bannerText().contains("held.orvanesync"); }))
        << bannerText().toStdString();
    EXPECT_FALSE(bannerText().contains("locked"));
    saveAs("shoot.orvanesync");
    EXPECT_TRUE(waitUntil([&] { return bannerText().contains("only: 1 locked clip."); }))
        << bannerText().toStdString();
}

TEST_F(OpeningTest, AStartOpensTheNewestSessionOrSaysWhyNot) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    const UUID id = *desktop_->sessions().currentSessionId();
    const QString folder = text(folder_.path("sessions/" + id.text() + ".orvanesync"));
    const auto start = [&](const std::function<void()>& atOnce = {}) {
        ASSERT_TRUE(waitUntil([&, saved = desktop_->sessions().flush()] { return saved.isDone(); }));
        begin();
        window_->openNewestSession();
        if (atOnce) atOnce();
        ASSERT_TRUE(waitUntil([&] {
            const bool isShown = !work().syncGroups().empty() || !bannerText().isEmpty();
            return isShown && !window_->isOpeningNewest();
        }));
        QCoreApplication::processEvents();
    };
    const auto page = [&] { return window_->findChild<QStackedWidget*>()->currentIndex(); };
    window_->resize(4000, 3000); // saved on a larger screen than the next one
    window_->results().search()->setText("a001");
    window_->results().select({clip("A001C003").id});
    window_->close();
    start();
    EXPECT_EQ(window_->results().search()->text(), "") << "an old search would hide clips";
    EXPECT_EQ(window_->results().selectedClips(), std::vector{clip("A001C003").id});
    EXPECT_LE(window_->height(), window_->screen()->availableGeometry().height());
    EXPECT_TRUE(clip("A001C001").isLocked);
    EXPECT_EQ(page(), 2);
    window_->findChild<QAction*>("newScan")->trigger();
    EXPECT_EQ(page(), 0);
    const auto isWelcome = [&] {
        return std::ranges::any_of(window_->findChildren<QLabel*>(), [](const QLabel* one) {
            return one->isVisible() && one->text().startsWith("Choose the camera and sound folders");
        });
    };
    EXPECT_FALSE(isWelcome()) << "there is a session";
    window_->findChild<QAction*>("introduction")->trigger();
    EXPECT_TRUE(isWelcome());

    // Opening it again in the same run does so too, also if a clip was only opened.
    window_->openReview(clip("B001C001").id);
    desktop_->run("reset");
    ASSERT_TRUE(waitUntil([&] { return work().syncGroups().empty(); }));
    JSON again = JSON::object();
    again.set("sessionId", id.text());
    desktop_->run("loadSession", std::move(again));
    ASSERT_TRUE(waitUntil([&] { return !work().syncGroups().empty() && page() == 2; }));
    EXPECT_EQ(window_->results().selectedClips(), std::vector{clip("B001C001").id});

    start([&] { window_->openPaths({"/nowhere"}); });
    EXPECT_TRUE(bannerText().contains("/nowhere"));
    EXPECT_TRUE(work().syncGroups().empty()) << "what is named takes its place";
    design::keptState::set("opening", text(id.text()));
    start();
    EXPECT_EQ(page(), 0);
    EXPECT_TRUE(bannerText().contains("ended while it opened")) << "it is not tried twice";
    std::ofstream(utf8(folder) + "/groups.json") << "no clips";
    start();
    EXPECT_EQ(page(), 0);
    EXPECT_TRUE(bannerText().contains("groups.json")) << bannerText().toStdString();
}

} // namespace orvane::views
