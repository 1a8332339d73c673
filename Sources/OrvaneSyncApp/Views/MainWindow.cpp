#include "OrvaneSyncApp/Views/MainWindow.h"

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/RecentPlaces.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/ScanningView.h"
#include "OrvaneSyncApp/Views/SessionsPanel.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/StartView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

namespace orvane::views {

using namespace design;

namespace {

constexpr QSize smallest{1024, 640};
constexpr QSize usual{1440, 800};
constexpr int sessionsWidth = 230;

QStringList droppedPaths(const QMimeData* data) {
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

QStringList folders(const QStringList& paths) {
    QStringList found;
    for (const QString& path : paths)
        if (QFileInfo(path).isDir()) found << path;
    return found;
}

} // namespace

MainWindow::MainWindow(Desktop& desktop) : desktop_(desktop) {
    setWindowTitle(QStringLiteral("OrvaneSync"));
    setMinimumSize(smallest);
    resize(usual);
    setAcceptDrops(true);

    auto* centre = new QWidget;
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(banner_ = new Banner);
    pages_ = new QStackedWidget;
    pages_->addWidget(start_ = new StartView(desktop, [this] { startScan(); }));
    pages_->addWidget(scanning_ = new ScanningView(desktop, [this] {
                          if (scan_) scan_->requestStop();
                      }));
    pages_->addWidget(results_ = new ResultsView(desktop));
    column->addWidget(pages_, 1);
    splitter_ = new QSplitter;
    splitter_->addWidget(sessions_ = new SessionsPanel(desktop));
    splitter_->addWidget(centre);
    splitter_->setStretchFactor(1, 1);
    splitter_->setChildrenCollapsible(false);
    splitter_->setSizes({sessionsWidth, usual.width() - sessionsWidth});
    setCentralWidget(splitter_);

    makeMenus();
    makeTools();
    results_->whenSelectionChanged = [this] { updateActions(); };
    results_->whenScanWanted = [this] {
        if (desktop_.isEnabled("startScan")) startScan();
    };
    desktop_.whenRefused = [this](const QString& why) { banner_->show(Signal::missing, why); };
    workObservation_ = desktop_.controller().onChange([this](ImportField field) {
        if (field == ImportField::progress) return;
        // Many fields change at once; the window follows when they all stand.
        if (std::exchange(isUpdateScheduled_, true)) return;
        QMetaObject::invokeMethod(
            this,
            [this] {
                isUpdateScheduled_ = false;
                showPage();
                updateActions();
                updateStatus();
            },
            Qt::QueuedConnection);
    });
    sessionObservation_ = desktop_.sessions().onChange([this](SessionField field) {
        if (field == SessionField::problem && desktop_.sessions().problem())
            banner_->show(Signal::doubtful, translatedSentence(*desktop_.sessions().problem()));
        if (field == SessionField::lastSaveError && desktop_.sessions().lastSaveError())
            banner_->show(
                Signal::missing,
                tr("The session could not be saved: %1").arg(text(*desktop_.sessions().lastSaveError())));
        updateStatus();
    });
    restorePlaces();
    showPage();
    updateActions();
    updateStatus();
}

MainWindow::~MainWindow() { desktop_.whenRefused = nullptr; }

QAction* MainWindow::addCommand(QMenu* menu, std::string_view id, const QKeySequence& key, JSON arguments) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setShortcut(key);
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this, [this, id, arguments] { desktop_.run(id, arguments); });
    commandActions_.emplace_back(action, id);
    return action;
}

QAction* MainWindow::addClipCommand(QMenu* menu, std::string_view id, const QKeySequence& key) {
    const commands::Command& row = desktop_.command(id);
    QAction* action = menu->addAction(translated(row.title));
    action->setShortcut(key);
    action->setStatusTip(translated(row.help));
    connect(action, &QAction::triggered, this, [this, id] { results_->runForSelection(id); });
    clipActions_.emplace_back(action, id);
    return action;
}

void MainWindow::makeMenus() {
    QMenu* file = menuBar()->addMenu(tr("&File"));
    connect(file->addAction(tr("New Scan…")), &QAction::triggered, this, [this] {
        wantsStart_ = true;
        showPage();
    });
    RecentPlaces::menu(file, [this](const QStringList& paths) { openPaths(paths); });
    QAction* newSession = addCommand(file, "newSession", QKeySequence::New);
    connect(newSession, &QAction::triggered, this, [this] { wantsStart_ = false; });
    file->addSeparator();
    QAction* open = file->addAction(translated(desktop_.command("loadProject").title));
    open->setShortcut(QKeySequence::Open);
    connect(open, &QAction::triggered, this, [this] {
        chooseAndRun("loadProject", tr("Open project"), tr("Projects (*.orvanesync);;All files (*)"), false);
    });
    QAction* save = file->addAction(translated(desktop_.command("saveProject").title));
    save->setShortcut(QKeySequence::SaveAs);
    connect(save, &QAction::triggered, this,
            [this] { chooseAndRun("saveProject", tr("Save project"), tr("Projects (*.orvanesync)"), true); });
    commandActions_.emplace_back(save, "exportFCPXML"); // there is work
    QAction* report = file->addAction(translated(desktop_.command("loadALE").title));
    report->setIcon(icon(Glyph::report));
    connect(report, &QAction::triggered, this, [this] {
        chooseAndRun("loadALE", tr("Load report"), tr("Reports (*.ale *.csv *.txt *.tsv);;All files (*)"),
                     false);
    });
    file->addSeparator();
    export_ =
        file->addAction(icon(Glyph::exportDocument), translated(desktop_.command("exportFCPXML").title));
    export_->setShortcut(QKeySequence(tr("Ctrl+E")));
    connect(export_, &QAction::triggered, this, [this] { showExport(desktop_, this); });
    commandActions_.emplace_back(export_, "exportFCPXML");
    file->addSeparator();
    addCommand(file, "reset", QKeySequence::Close);
    QAction* quit = file->addAction(tr("Quit"));
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, this, [this] { close(); });

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    undo_ = addCommand(edit, "undo", QKeySequence::Undo);
    undo_->setIcon(icon(Glyph::undo));
    redo_ = addCommand(edit, "redo", QKeySequence::Redo);
    redo_->setIcon(icon(Glyph::redo));
    edit->addSeparator();
    QAction* find = edit->addAction(tr("Find…"));
    find->setShortcut(QKeySequence::Find);
    connect(find, &QAction::triggered, this, [this] { results_->search()->setFocus(); });
    QAction* settings = edit->addAction(icon(Glyph::gear), tr("Settings…"));
    settings->setShortcut(QKeySequence(tr("Ctrl+,")));
    connect(settings, &QAction::triggered, this, [this] { SettingsWindow(desktop_, this).exec(); });

    QMenu* clip = menuBar()->addMenu(tr("&Clip"));
    addClipCommand(clip, "toggleApproved", QKeySequence(tr("Ctrl+Return")))->setIcon(icon(Glyph::approve));
    addClipCommand(clip, "toggleLocked", QKeySequence(tr("Ctrl+L")))->setIcon(icon(Glyph::lock));
    addClipCommand(clip, "toggleExcludedFromExport")->setIcon(icon(Glyph::excluded));
    addClipCommand(clip, "toggleExcludedFromMulticam");
    addClipCommand(clip, "togglePickup");
    clip->addSeparator();
    rename_ = clip->addAction(icon(Glyph::rename), tr("Rename…"));
    rename_->setShortcut(QKeySequence(Qt::Key_F2));
    connect(rename_, &QAction::triggered, this, [this] { results_->renameSelection(); });
    addClipCommand(clip, "confirmAmbiguousMatch");
    addClipCommand(clip, "resyncClip", QKeySequence(tr("Ctrl+R")))->setIcon(icon(Glyph::refresh));
    addClipCommand(clip, "resetClipToAutoSync");
    clip->addSeparator();
    addCommand(clip, "resyncAllClips")->setIcon(icon(Glyph::refresh));

    QMenu* audio = menuBar()->addMenu(tr("&Audio"));
    JSON mode = JSON::object();
    mode.set("mode", settings::smartAudioMode.write(SmartAudioMode::standard));
    mode.set("forceOverwriteManualTracks", false);
    addCommand(audio, "runSmartAudioAnalysis", {}, mode)->setIcon(icon(Glyph::waveform));
    for (const std::string_view other : settings::smartAudioMode.choices) {
        mode.set("mode", other);
        QAction* action = audio->addAction(tr("Smart Audio: %1").arg(text(other)));
        connect(action, &QAction::triggered, this,
                [this, mode] { desktop_.run("runSmartAudioAnalysis", mode); });
        commandActions_.emplace_back(action, "runSmartAudioAnalysis");
    }

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    sheetActions_ = addSheetActions(desktop_, this, clip, audio, help);
}

void MainWindow::makeTools() {
    auto* tools = addToolBar(tr("Tools"));
    tools->setObjectName(QStringLiteral("tools"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    const auto actionOf = [this](std::string_view id) {
        for (const auto& list : {commandActions_, clipActions_})
            for (const auto& [action, command] : list)
                if (command == id) return action;
        return export_;
    };
    // Short, so that all of them stand beside each other in the narrowest window.
    const auto add = [tools](QAction* action, const QString& word) {
        action->setIconText(QLatin1Char(' ') + word);
        tools->addAction(action);
    };
    add(undo_, tr("Undo"));
    add(redo_, tr("Redo"));
    tools->addSeparator();
    add(actionOf("runSmartAudioAnalysis"), tr("Smart Audio"));
    add(actionOf("toggleApproved"), tr("Approve"));
    add(actionOf("toggleLocked"), tr("Lock"));
    add(rename_, tr("Rename"));
    add(actionOf("resyncAllClips"), tr("Re-sync"));
    auto* stretch = new QWidget;
    stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    tools->addWidget(stretch);
    add(export_, tr("Export"));
}

void MainWindow::startScan() {
    wantsStart_ = false;
    banner_->clear();
    scanning_->begin();
    const bool isOther = desktop_.controller().work().syncGroups().empty();
    scan_ = desktop_.controller().scan().startScan(isOther ? OpenWork::ScanOf::otherWork
                                                           : OpenWork::ScanOf::sameWork);
    scan_->whenDone([this](const std::exception_ptr& raised) {
        scan_.reset();
        try {
            if (raised) std::rethrow_exception(raised);
            desktop_.sessions().beginSessionOfOpenWork(desktop_.controller());
            QStringList scanned;
            for (const FileURL& folder : desktop_.controller().work().folders()) scanned << text(folder.path);
            RecentPlaces::add(scanned);
        } catch (const std::exception& why) {
            banner_->show(Signal::missing, translatedSentence(why.what()));
        } catch (const platform::Stopped&) {
            banner_->show(Signal::none, tr("The scan was cancelled; all is as it was."));
        }
        showPage();
    });
    showPage();
}

void MainWindow::scanFolders(const QStringList& paths) {
    QStringList absolute;
    for (const QString& path : paths) absolute << QFileInfo(path).absoluteFilePath();
    start_->takeFolders(absolute);
    if (desktop_.isEnabled("startScan")) startScan();
}

void MainWindow::openPaths(const QStringList& paths) {
    if (paths.size() == 1 && paths.first().endsWith(QStringLiteral(".orvanesync")))
        return openProject(paths.first());
    if (const QStringList cards = folders(paths); !cards.isEmpty()) scanFolders(cards);
}

void MainWindow::openProject(const QString& path) {
    RecentPlaces::add({QFileInfo(path).absoluteFilePath()});
    JSON arguments = JSON::object();
    arguments.set("path", utf8(QFileInfo(path).absoluteFilePath()));
    desktop_.run("loadProject", std::move(arguments));
}

void MainWindow::showPage() {
    const ImportController& controller = desktop_.controller();
    const ScanState state = controller.scan().scanState();
    const bool isScanning = state != ScanState::idle && state != ScanState::done;
    const bool hasWork = !controller.work().syncGroups().empty() || !controller.work().wildTracks().empty();
    QWidget* page = start_;
    if (isScanning)
        page = scanning_;
    else if (!wantsStart_ && (hasWork || state == ScanState::done))
        page = results_;
    if (pages_->currentWidget() == page) return;
    pages_->setCurrentWidget(page);
    if (page == results_) results_->table()->setFocus();
}

void MainWindow::updateActions() {
    for (const auto& [action, id] : commandActions_) action->setEnabled(desktop_.isEnabled(id));
    const bool areClipsShown = pages_->currentWidget() == results_;
    const std::vector<UUID> clips = results_->selectedClips();
    const SyncGroupList& groups = desktop_.controller().work().syncGroups();
    for (const auto& [action, id] : clipActions_) {
        bool applies = false;
        for (const UUID& clip : clips) {
            const SyncGroup* group = groups.find(clip);
            applies = applies || (group != nullptr && desktop_.isEnabled(id, group));
        }
        action->setEnabled(areClipsShown && applies);
    }
    rename_->setEnabled(areClipsShown && clips.size() == 1);
    const UndoState undo = desktop_.controller().work().undoState();
    undo_->setText(undo.undoActionName ? tr("Undo %1").arg(translated(*undo.undoActionName)) : tr("Undo"));
    redo_->setText(undo.redoActionName ? tr("Redo %1").arg(translated(*undo.redoActionName)) : tr("Redo"));
}

void MainWindow::updateStatus() {
    const OpenWork& work = desktop_.controller().work();
    QString sentence;
    if (!work.syncGroups().empty())
        sentence = tr("%1 clips: %2 with sound, %3 MOS, %4 not matched")
                       .arg(work.syncGroups().size())
                       .arg(work.syncClipCount())
                       .arg(work.mosCount())
                       .arg(work.unmatchedCount());
    statusBar()->showMessage(sentence);
    const auto& id = desktop_.sessions().currentSessionId();
    const SessionInfo* session = id ? desktop_.sessions().session(*id) : nullptr;
    setWindowTitle(session != nullptr ? tr("%1 – OrvaneSync").arg(text(session->name))
                                      : QStringLiteral("OrvaneSync"));
}

void MainWindow::chooseAndRun(std::string_view id, const QString& caption, const QString& filter,
                              bool isSaved) {
    QSettings places;
    const QString from = places.value(QStringLiteral("lastFolder")).toString();
    QString chosen = isSaved ? QFileDialog::getSaveFileName(this, caption, from, filter)
                             : QFileDialog::getOpenFileName(this, caption, from, filter);
    if (chosen.isEmpty()) return;
    places.setValue(QStringLiteral("lastFolder"), QFileInfo(chosen).absolutePath());
    JSON arguments = JSON::object();
    if (isSaved) {
        if (QFileInfo(chosen).suffix().isEmpty()) chosen += QStringLiteral(".orvanesync");
        arguments.set("overwrite", true); // the dialog has asked
    }
    arguments.set("path", utf8(chosen));
    desktop_.run(id, std::move(arguments));
}

void MainWindow::restorePlaces() {
    const QSettings places;
    restoreGeometry(places.value(QStringLiteral("window")).toByteArray());
    splitter_->restoreState(places.value(QStringLiteral("sessions")).toByteArray());
    results_->table()->horizontalHeader()->restoreState(
        places.value(QStringLiteral("columns")).toByteArray());
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!droppedPaths(event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const QStringList paths = droppedPaths(event->mimeData());
    if (paths.size() == 1 && paths.first().endsWith(QStringLiteral(".orvanesync")))
        return openProject(paths.first());
    const QStringList dropped = folders(paths);
    if (dropped.isEmpty()) {
        banner_->show(Signal::doubtful, tr("Drop the folders of the cards, or a project file."));
        return;
    }
    wantsStart_ = true;
    start_->takeFolders(dropped);
    showPage();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    QSettings places;
    places.setValue(QStringLiteral("window"), saveGeometry());
    places.setValue(QStringLiteral("sessions"), splitter_->saveState());
    places.setValue(QStringLiteral("columns"), results_->table()->horizontalHeader()->saveState());
    event->accept();
}

} // namespace orvane::views
